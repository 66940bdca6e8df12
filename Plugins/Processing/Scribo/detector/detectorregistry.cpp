#include "detectorregistry.h"

#include "crnntrtdetector.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace {

struct Registry
{
    std::mutex mutex;
    std::map<std::string, std::unique_ptr<OCRDetector>> detectors;
};

/// Never destroyed: at the end of the process the driver may shut down before the detectors do.
Registry& registry()
{
    static auto* const instance = new Registry;
    return *instance;
}

std::unique_ptr<OCRDetector> makeDetector(int kind, const std::string& enginePath, DetectorConfig config)
{
    if (kind == DetectorKind::crnnTrt) {
        return std::make_unique<CRNNTRTDetector>(enginePath, std::move(config));
    }
    return std::make_unique<OCRDetector>(std::move(config));
}

} // namespace

OCRDetector* createDetector(int kind, const std::string& enginePath, DetectorConfig config)
{
    const std::lock_guard lock(registry().mutex);
    std::unique_ptr<OCRDetector>& detector = registry().detectors[enginePath];
    if (!detector) {
        detector = makeDetector(kind, enginePath, std::move(config));
    }
    return detector.get();
}
