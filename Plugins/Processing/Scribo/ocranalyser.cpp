#include "ocranalyser.h"

#include "detectorregistry.h"
#include "modelfilename.h"
#include "modellimits.h"
#include "ocrdetector.h"
#include "resulttext.h"

#include <QFileInfo>

#include <exception>

namespace {

/// The detector for the engine at `modelPath`, usable, or null.
OCRDetector* findDetector(const QString& modelPath, const DetectorConfig& config)
{
    try {
        OCRDetector* detector = createDetector(DetectorKind::crnnTrt, modelPath.toStdString(), config);
        return detector->isReady() ? detector : nullptr;
    } catch (const std::exception& exception) {
        // There is no thread or no memory left. That must not end the host's process.
        qWarning().noquote().nospace() << "Creating the detector raised: " << exception.what();
        return nullptr;
    }
}

/// The detector's answer. An exception of the image library counts as a failed detection.
bool detectCharacters(OCRDetector& detector, const cv::Mat& image, std::vector<std::string>& characters)
{
    try {
        return detector.detect(image, characters);
    } catch (const std::exception& exception) {
        qWarning().noquote().nospace() << "Detection raised: " << exception.what();
        return false;
    }
}

} // namespace

OCRAnalyser::OCRAnalyser(const QString& modelPath)
{
    qInfo().noquote().nospace() << "Initialize ocr analyser from " << modelPath;
    if (!parseConfigs(modelPath) || !initDetector(modelPath)) {
        return;
    }
    qInfo().noquote().nospace() << "Initialize ocr analyser from " << modelPath << " successfully.";
    state.initialized = true;
}

bool OCRAnalyser::parseConfigs(const QString& modelPath)
{
    if (!QFileInfo::exists(modelPath)) {
        return fail(qCritical(), "Can not load model from file: " + modelPath);
    }
    const std::optional<ModelFileName> name = splitModelFileName(modelPath);
    if (!name) {
        return fail(qCritical(), QStringLiteral("model file format error."));
    }
    state.engineType = name->engineType;
    state.modelName = name->modelName;
    return loadConfigFile(name->configPath);
}

bool OCRAnalyser::loadConfigFile(const QString& path)
{
    const scribo::Result<void> read = readModelConfig(path, &state.config);
    const DetectorConfig& detector = state.config.detector;
    if (state.config.hasClassAndInputSize()) {
        qInfo().nospace() << "Model config info: " << detector.classNum << " classes, input width " << detector.width
                          << ", height " << detector.height << ", channels " << detector.channels << ", batch "
                          << detector.batch << ", letter_box " << detector.letter_box;
    }
    if (!read) {
        return fail(qCritical(), scribo::textOf(read.error()));
    }
    if (detector.mask.empty()) {
        qInfo().nospace() << "Use anchor-free configuration.";
    }
    return true;
}

bool OCRAnalyser::initDetector(const QString& modelPath)
{
    if (state.engineType != QLatin1String(modellimits::engineType)) {
        return fail(qCritical(), "Unsupported engine type: " + state.engineType);
    }
    OCRDetector* detector = findDetector(modelPath, state.config.detector);
    if (!detector) {
        return fail(qCritical(), "Create object detector failed from file: " + modelPath);
    }
    // The first run of a network takes longer, since it prepares what later runs reuse. So it does not happen on the
    // line.
    qInfo().nospace() << "Warm up detector with first dummy detection";
    std::vector<std::string> discarded;
    if (!detectCharacters(*detector, cv::Mat::zeros(100, 100, CV_8UC3), discarded)) {
        return fail(qCritical(), QStringLiteral("Internal error, the detector does not work properly."));
    }
    state.detector = detector;
    return true;
}

int OCRAnalyser::execute(const cv::Mat& image, std::vector<SOrgAI_ResInfo>& results)
{
    results.clear();
    if (image.empty() || (image.channels() != 1 && image.channels() != 3)) {
        fail(qWarning(), QStringLiteral("Invalid image data."));
        return -1;
    }
    if (!state.initialized) {
        state.errorMessage = QStringLiteral("Detector had not been initialized properly.");
        return -2;
    }
    std::vector<std::string> characters;
    if (!detectCharacters(*state.detector, image, characters)) {
        fail(qCritical(), QStringLiteral("Internal error, detection failed."));
        return -3;
    }
    SOrgAI_ResInfo line;
    for (const std::string& character : characters) {
        line.text += character;
    }
    line.rect = cv::Rect(0, 0, image.cols, image.rows);
    results.push_back(std::move(line));
    return 1;
}

/// Keeps `message` for the caller and writes it to `log`, which comes from the failing step, so that the line in the
/// log names that step's place in the source.
bool OCRAnalyser::fail(QDebug log, const QString& message)
{
    state.errorMessage = message;
    log.noquote().nospace() << message;
    return false;
}
