#pragma once

#include "ocrdetector.h"

#include <NvInfer.h>
#include <cuda_runtime_api.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A CRNN network in a TensorRT engine file: one input (batch, channels, height, width) whose width
/// follows the picture's aspect ratio, outputs (time, batch, class).
///
/// All buffers are allocated at construction for the configured width, which is the largest width of any run. They are
/// never freed: copies on the stream may still be running when a detector is destroyed, and at the end of the process
/// the driver may already have shut down. Detectors live as long as the process.
class CRNNTRTDetector : public OCRDetector
{
public:
    /// Loads the engine file at `enginePath` (UTF-8) and checks it against `config`. Does not throw for
    /// an engine that cannot be used: the log says why and isReady() stays false.
    CRNNTRTDetector(const std::string& enginePath, DetectorConfig config);
    ~CRNNTRTDetector() override;

    /// Callable from any thread. False, with a line in the log and the detector as usable as before,
    /// for an empty image, without an engine, or when pre-processing or inference fail.
    bool detect(cv::Mat image, std::vector<std::string>& characters) override;

protected:
    bool infer(cv::Mat image, const cv::Size& sourceSize, std::vector<std::string>& characters) override;

private:
    bool loadEngine(const std::string& enginePath);
    bool bindInput();
    bool bindOutputs();
    bool makeStream();
    bool setInputWidth(std::int32_t width);
    bool checkOutputBinding(std::size_t index) const;
    cv::Size networkSize(const cv::Mat& image) const;
    bool copyInput(const cv::Mat& image);
    bool runNetwork();
    bool updateOutputShapes();
    bool copyOutputs();

    // Destroyed from the last to the first: the engine outlives its context, the runtime its engine.
    std::unique_ptr<nvinfer1::IRuntime> runtime;
    std::unique_ptr<nvinfer1::ICudaEngine> engine;
    std::unique_ptr<nvinfer1::IExecutionContext> context;
    cudaStream_t stream = nullptr;
    nvinfer1::Dims inputDims = {}; ///< batch, channels, height, width
    std::int64_t inputSize = 0; ///< bytes of the input at the current width
    float* inputHost = nullptr; ///< planar, at least three planes
    void* inputDevice = nullptr;
    std::int64_t inputHostCapacity = 0; ///< bytes
    std::int64_t inputDeviceCapacity = 0; ///< bytes
    std::vector<std::int64_t> outputCapacities; ///< bytes of each output's two buffers
};
