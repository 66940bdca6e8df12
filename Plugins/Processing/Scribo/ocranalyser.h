#pragma once

#include "modelconfig.h"
#include "resinfo.h"

#include <QDebug>
#include <QString>
#include <opencv2/core/mat.hpp>

#include <string>
#include <vector>

class OCRDetector;

/// A model package, ready to read: the engine file's name leads to the configuration, both lead to a
/// detector, and execute() reads a picture with it.
///
/// The detector belongs to the detector registry and is shared with every other analyser of the same
/// engine file; it outlives the analyser. Used by one thread at a time.
class OCRAnalyser
{
public:
    /// Loads the model from the engine file at `modelPath` and warms its detector up. Does not throw when the model
    /// cannot be used: isInitialized() is then false, and errorMessage() says why.
    explicit OCRAnalyser(const QString& modelPath);

    bool isInitialized() const { return state.initialized; }
    /// The message of the last failure, of the construction or of execute(); empty when there was none.
    QString errorMessage() const { return state.errorMessage; }
    /// Pieces 2 to 4 of the engine file's name, joined by "_".
    QString modelName() const { return state.modelName; }
    const std::vector<ClassInfo>& classes() const { return state.config.classes; }
    QString ignoreChar() const { return state.config.ignoreChar; }
    /// Null unless the analyser is initialised.
    OCRDetector* detector() const { return state.detector; }

    /// Reads `image` (1 or 3 channels) and puts exactly one record into `results`: the whole text, also
    /// an empty one, with the whole image as its box. Blocks until the detector has answered.
    /// Returns 1 on success; otherwise `results` is empty, errorMessage() is set and the value is
    /// -1 for an unsuitable image, -2 when the analyser is not initialised, -3 when detection failed.
    int execute(const cv::Mat& image, std::vector<SOrgAI_ResInfo>& results);

private:
    struct State
    {
        OCRDetector* detector = nullptr; ///< not owned
        bool initialized = false;
        QString errorMessage;
        QString modelName;
        QString engineType;
        ModelConfig config;
    };

    bool parseConfigs(const QString& modelPath);
    bool loadConfigFile(const QString& path);
    bool initDetector(const QString& modelPath);
    bool fail(QDebug log, const QString& message);

    State state;
};
