#include "ocrdetector.h"

#include "modellimits.h"

#include <glog/logging.h>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <exception>
#include <limits>
#include <utility>

namespace {

constexpr std::uint64_t maxQueuedRequests = 100;
constexpr std::uint32_t waitForRoomMs = std::numeric_limits<std::uint32_t>::max();
/// How long the idle worker waits before it checks whether to stop.
constexpr std::uint32_t pollMs = 1;

/// The models are trained on values from -1 to 1: value / 127.5 - 1.
constexpr double inputScale = 0.00784313725490196;
constexpr double inputOffset = -1.0;

/// The first of the best classes of one step, or 0, the blank, when no score is above the floor.
std::int32_t bestClass(const float* scores, std::int32_t numClasses)
{
    float best = 0.0F;
    std::int32_t bestIndex = 0;
    for (std::int32_t j = 0; j < numClasses; ++j) {
        // Compared as double, in which the float nearest to 0.1 is just above the floor.
        if (scores[j] > best && static_cast<double>(scores[j]) > modellimits::scoreFloor) {
            best = scores[j];
            bestIndex = j;
        }
    }
    return bestIndex;
}

/// Nearest integer, halves away from zero.
int roundToPixels(float length)
{
    return cvRound(std::round(length));
}

} // namespace

OCRDetector::OCRDetector(DetectorConfig config)
    : config(std::move(config))
    , requests(maxQueuedRequests)
{
    worker = std::make_unique<std::thread>(&OCRDetector::inferenceThread, this);
}

OCRDetector::~OCRDetector()
{
    stopRequested = true;
    worker->join();
}

bool OCRDetector::detect(cv::Mat /*image*/, std::vector<std::string>& /*characters*/)
{
    LOG(ERROR) << "Object detection not supported.";
    return false;
}

bool OCRDetector::infer(cv::Mat /*image*/, const cv::Size& /*sourceSize*/, std::vector<std::string>& /*characters*/)
{
    return true;
}

bool OCRDetector::setConfidenceThreshold(float threshold)
{
    LOG(INFO) << "Setting object detector class confidence threshold to " << threshold;
    // Plug-in instances on different threads share a detector and may set this at the same time. An atomic store needs
    // no lock and leaves no mixture of two values.
    __atomic_store(&config.confThreshold, &threshold, __ATOMIC_RELAXED);
    return true;
}

bool OCRDetector::submitRequest(cv::Mat image, const cv::Size& sourceSize, std::vector<std::string>& characters)
{
    const auto promise = std::make_shared<std::promise<InferResult>>();
    requests.push({std::move(image), sourceSize, promise}, waitForRoomMs);
    InferResult result = promise->get_future().get();
    characters = std::move(result.characters);
    return result.success;
}

void OCRDetector::inferenceThread()
{
    LOG(INFO) << "OCR detector inference thread started.";
    try {
        while (!stopRequested) {
            serveNextRequest();
        }
        LOG(INFO) << "OCR detector inference thread stopped.";
    } catch (const std::exception& exception) {
        LOG(FATAL) << "OCR detector inference thread exception: " << exception.what();
    }
}

void OCRDetector::serveNextRequest()
{
    std::vector<InferRequest> batch;
    if (!requests.pop(batch, 1, pollMs)) {
        return;
    }
    const InferRequest& request = batch.front();
    InferResult result;
    result.success = infer(request.image, request.sourceSize, result.characters);
    request.promise->set_value(std::move(result));
}

bool OCRDetector::preProcess(cv::Mat image, cv::Mat& output, const cv::Size& target)
{
    LOG(INFO) << "OCRDetector image preProcess resize to :[" << target.width << " x " << target.height << "]";
    if (image.channels() != 1 && image.channels() != 3) {
        LOG(ERROR) << "Unsupported image format for inference.";
        return false;
    }
    cv::Mat resized;
    resizeImage(image, resized, target, config.letter_box);
    if (image.channels() == 3) {
        resized.convertTo(output, CV_32F, inputScale, inputOffset);
        return true;
    }
    cv::Mat plane;
    resized.convertTo(plane, CV_32F, inputScale, inputOffset);
    cv::merge(std::vector<cv::Mat>(3, plane), output);
    return true;
}

void OCRDetector::resizeImage(cv::Mat image, cv::Mat& output, const cv::Size& target, bool letterBox)
{
    if (!letterBox) {
        cv::resize(image, output, target, 0, 0, cv::INTER_LINEAR);
        return;
    }
    const float scaleX = static_cast<float>(target.width) / static_cast<float>(image.cols);
    const float scaleY = static_cast<float>(target.height) / static_cast<float>(image.rows);
    const float scale = scaleY > scaleX ? scaleX : scaleY;
    const int height = roundToPixels(static_cast<float>(image.rows) * scale);
    const int width = roundToPixels(static_cast<float>(image.cols) * scale);
    cv::resize(image, output, cv::Size(width, height), 0, 0, cv::INTER_LINEAR);

    // An odd remainder goes to the right and to the bottom.
    const int left = (target.width - width) / 2;
    const int top = (target.height - height) / 2;
    const int right = target.width - left - width;
    const int bottom = target.height - top - height;
    cv::copyMakeBorder(output, output, top, bottom, left, right, cv::BORDER_CONSTANT, cv::Scalar(128, 128, 128, 0));
}

void OCRDetector::decodeOCR(std::vector<std::string>& characters)
{
    missingClass = 0;
    for (std::size_t i = 0; i < config.output_layers.size(); ++i) {
        if (i == outputs.size()) {
            LOG(ERROR) << "decodeOCR has no output tensor for layer: " << config.output_layers[i];
            break;
        }
        decodeTensor(outputs[i], characters);
    }
    if (leftOutCharacter()) {
        LOG(ERROR) << "decodeOCR has no alphabet entry for class: " << missingClass;
    }
}

void OCRDetector::decodeTensor(const OutputTensor& tensor, std::vector<std::string>& characters)
{
    LOG(INFO) << "decodeOCR num:" << tensor.timeSteps << "--" << tensor.numClasses;
    std::int32_t previous = -1;
    for (std::int32_t t = 0; t < tensor.timeSteps; ++t) {
        const float* scores = tensor.hostBuffer + static_cast<std::ptrdiff_t>(t) * tensor.numClasses;
        const std::int32_t best = bestClass(scores, tensor.numClasses);
        const bool repeated = best == previous;
        previous = best;
        if (best == 0) {
            continue;
        }
        if (static_cast<std::size_t>(best) > config.alphabet.size()) {
            missingClass = leftOutCharacter() ? missingClass : best;
            continue;
        }
        const std::string& character = config.alphabet[static_cast<std::size_t>(best) - 1];
        if (repeated) {
            LOG(INFO) << "decodeOCR delete char:" << character;
        } else {
            characters.push_back(character);
        }
    }
}
