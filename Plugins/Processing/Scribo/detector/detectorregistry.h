#pragma once

#include "detectorconfig.h"

#include <string>

class OCRDetector;

/// The kinds of detector that createDetector() makes.
namespace DetectorKind {
constexpr int crnnTrt = 1;
}

/// The process's detector for the engine file at `enginePath` (UTF-8, compared bytewise), made on the
/// first call: a CRNNTRTDetector for DetectorKind::crnnTrt, a plain OCRDetector, which cannot detect,
/// for any other kind. Later calls return the same one, whatever their `kind` and `config`, also when
/// its engine could not be loaded. The registry owns the detectors and never deletes one.
/// Throws std::system_error when no thread can be created for a new detector.
OCRDetector* createDetector(int kind, const std::string& enginePath, DetectorConfig config);
