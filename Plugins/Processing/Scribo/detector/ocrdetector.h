#pragma once

#include "blockingqueue.h"
#include "detectorconfig.h"

#include <opencv2/core/mat.hpp>

#include <atomic>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// One output of an engine. Elements are 32-bit floats throughout.
struct OutputTensor
{
    std::string name;
    std::int32_t timeSteps = 0; ///< rows that the decoder reads
    std::int32_t numClasses = 0; ///< scores in each of them
    // The other extents, kept for decoders of outputs of another layout. Greedy CTC does not need them.
    std::int32_t dim1 = 0; ///< second extent: the batch of a (time, batch, class) output
    std::int32_t dim3 = 0; ///< fourth extent
    std::int64_t byteSize = 0;
    void* deviceBuffer = nullptr;
    float* hostBuffer = nullptr; ///< the last inference's values, row-major
};

/// Base of every text recogniser: one worker thread runs all inferences of a detector one at a time, in
/// the order in which they were submitted, however many threads ask.
///
/// The worker alone touches the network and `outputs` once the detector is built, so inference takes
/// no lock. An exception on the worker is logged at FATAL, which ends the process.
///
/// Do not destroy a detector while a caller waits in detect().
class OCRDetector
{
public:
    /// Starts the worker. Throws std::system_error when no thread can be created.
    explicit OCRDetector(DetectorConfig config);
    /// Waits until the worker has finished its current request, and stops it. Requests that still wait are dropped.
    virtual ~OCRDetector();
    OCRDetector(const OCRDetector&) = delete;
    OCRDetector& operator=(const OCRDetector&) = delete;

    /// Reads the text in `image` into `characters`, one UTF-8 string per character in reading order.
    /// Returns false, with a line in the log, when that fails. Exceptions of the image library pass through.
    /// The base class reads nothing: it returns false and leaves `characters` as they are.
    virtual bool detect(cv::Mat image, std::vector<std::string>& characters);

    /// Whether the engine is loaded and usable.
    bool isReady() const { return ready; }

    /// Sets the configuration's class confidence threshold. Decoding keeps its own fixed floor.
    /// Always true.
    bool setConfidenceThreshold(float threshold);

protected:
    /// What one inference gave.
    struct InferResult
    {
        bool success = false;
        std::vector<std::string> characters;
    };

    /// Runs the network on a pre-processed `image` and decodes the result into `characters`. `sourceSize` is the size
    /// of the image before pre-processing: detectors that find boxes need it. Called by the worker only. The base class
    /// does nothing and returns true.
    virtual bool infer(cv::Mat image, const cv::Size& sourceSize, std::vector<std::string>& characters);

    /// Queues a pre-processed `image` (pixels shared, not copied) for infer() and waits for its answer,
    /// which replaces `characters`. Returns what infer() returned.
    bool submitRequest(cv::Mat image, const cv::Size& sourceSize, std::vector<std::string>& characters);

    /// Makes the network's input of `image`: `target` pixels, three interleaved channels of 32-bit
    /// float, each value / 127.5 - 1. A grey image gives three equal channels; the order of a coloured
    /// one's is kept. False, with `output` untouched, for another channel count than 1 or 3.
    bool preProcess(cv::Mat image, cv::Mat& output, const cv::Size& target);

    /// Resizes `image` to `target` pixels: stretched, or with `letterBox` as large as fits, centred, on
    /// mid grey (128).
    void resizeImage(cv::Mat image, cv::Mat& output, const cv::Size& target, bool letterBox);

    /// Appends the characters that the last inference's `outputs` hold. Greedy CTC: the best class of
    /// every step, repeats collapsed, class 0 the blank (Graves et al., ICML 2006, best path decoding).
    /// A class for which the alphabet has no character is skipped: see leftOutCharacter().
    void decodeOCR(std::vector<std::string>& characters);

    /// Whether the last decodeOCR() skipped a class for which the alphabet has no character. Its characters are then
    /// not what the network read. For the thread that decodes only.
    bool leftOutCharacter() const { return missingClass != 0; }

    DetectorConfig config;
    std::vector<OutputTensor> outputs;
    bool ready = false;

private:
    struct InferRequest
    {
        cv::Mat image;
        cv::Size sourceSize;
        std::shared_ptr<std::promise<InferResult>> promise;
    };

    void inferenceThread();
    void serveNextRequest();
    void decodeTensor(const OutputTensor& tensor, std::vector<std::string>& characters);

    std::atomic<bool> stopRequested = false;
    std::int32_t missingClass = 0; ///< the first that the last decoding skipped; 0: none
    std::unique_ptr<std::thread> worker;
    BlockingQueue<InferRequest> requests;
};
