#include "crnntrtdetector.h"

#include "modellimits.h"
#include "nvlogger.h"

#include <glog/logging.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

// Deprecated in TensorRT 8.6 in favour of calls by tensor name, but present in every version of TensorRT 8.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

/// The networks halve the width twice on their way to time steps.
constexpr std::int32_t pixelsPerTimeStep = 4;
/// The planes that are copied into the input, whatever the engine's channel count.
constexpr int inputPlanes = modellimits::pictureChannels;
constexpr int widthExtent = 3;
constexpr std::int64_t floatBytes = sizeof(float);
constexpr std::int64_t tooManyBytes = std::numeric_limits<std::int32_t>::max();

/// The whole file; nothing when it cannot be opened or does not fit into memory. A folder or a pipe has no length and
/// counts as not opened.
std::optional<std::vector<char>> readFile(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    file.seekg(0);
    try {
        std::vector<char> bytes(static_cast<std::size_t>(std::max<std::streamoff>(length, 0)));
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// Bytes of a tensor of `count` extents of 32-bit floats. Sizes are 32-bit numbers: a larger one is
/// tooManyBytes.
std::int64_t byteSizeOf(const nvinfer1::Dims& dims, std::int32_t count)
{
    std::int64_t bytes = floatBytes;
    for (std::int32_t i = 0; i < count; ++i) {
        bytes = std::clamp<std::int64_t>(bytes * dims.d[i], -tooManyBytes, tooManyBytes);
    }
    return bytes;
}

std::int64_t inputByteSize(const nvinfer1::Dims& dims)
{
    return byteSizeOf(dims, widthExtent + 1);
}

/// Negative when the runtime could not tell the dimensions.
std::int64_t outputByteSize(const nvinfer1::Dims& dims)
{
    if (dims.nbDims < 0) {
        return dims.nbDims;
    }
    return byteSizeOf(dims, std::min<std::int32_t>(dims.nbDims, nvinfer1::Dims::MAX_DIMS));
}

bool isAllocatable(std::int64_t bytes)
{
    return bytes >= 0 && bytes < tooManyBytes;
}

/// Host memory for one tensor, zeroed; never freed. Null when there is not enough memory.
float* allocateHost(std::int64_t bytes)
{
    return isAllocatable(bytes) ? new (std::nothrow) float[static_cast<std::size_t>(bytes / floatBytes)]() : nullptr;
}

/// Device memory for one tensor; never freed.
cudaError_t allocateDevice(std::int64_t bytes, void** device)
{
    return isAllocatable(bytes) ? cudaMalloc(device, static_cast<std::size_t>(bytes)) : cudaErrorMemoryAllocation;
}

void setShape(OutputTensor& output, const nvinfer1::Dims& dims, std::int32_t timeSteps)
{
    output.timeSteps = timeSteps;
    output.dim1 = dims.d[1];
    output.numClasses = dims.d[2];
    output.dim3 = dims.d[3];
    output.byteSize = outputByteSize(dims);
}

void logCudaError(cudaError_t error)
{
    LOG(ERROR) << "Last CUDA error: " << cudaGetErrorString(error);
}

} // namespace

CRNNTRTDetector::CRNNTRTDetector(const std::string& enginePath, DetectorConfig config)
    : OCRDetector(std::move(config))
{
    LOG(INFO) << "Initialize CRNN trt detector from file:" << enginePath;
    ready = loadEngine(enginePath) && bindInput() && bindOutputs() && makeStream();
    if (ready) {
        LOG(INFO) << "Initialize CRNN trt detector success.";
    }
}

CRNNTRTDetector::~CRNNTRTDetector() = default;

bool CRNNTRTDetector::loadEngine(const std::string& enginePath)
{
    const std::optional<std::vector<char>> bytes = readFile(enginePath);
    if (!bytes) {
        LOG(ERROR) << "Open CRNN trt engine failed from file: " << enginePath;
        return false;
    }
    runtime.reset(nvinfer1::createInferRuntime(Logger::instance()));
    if (runtime) {
        engine.reset(runtime->deserializeCudaEngine(bytes->data(), bytes->size()));
    }
    if (!engine) {
        LOG(ERROR) << "De-serialize CRNN trt engine failed from file: " << enginePath;
        return false;
    }
    context.reset(engine->createExecutionContext());
    if (!context) {
        LOG(ERROR) << "Create CRNN trt execution context failed.";
        return false;
    }
    const auto outputCount = static_cast<std::int64_t>(config.output_layers.size());
    if (config.input_layers.size() != 1 || outputCount != std::int64_t{engine->getNbBindings()} - 1) {
        LOG(ERROR) << "Configuration for CRNN trt input/output layers error.";
        return false;
    }
    return true;
}

bool CRNNTRTDetector::bindInput()
{
    if (engine->getBindingIndex(config.input_layers.front().c_str()) != 0) {
        LOG(ERROR) << "Get CRNN trt engine input binding failed.";
        return false;
    }
    inputDims = context->getBindingDimensions(0);
    if (inputDims.d[0] != config.batch || inputDims.d[1] != config.channels || inputDims.d[2] != config.height) {
        LOG(ERROR) << "Configuration for CRNN trt input dimensions error.";
        return false;
    }
    if (!setInputWidth(config.width)) {
        return false;
    }
    nvinfer1::Dims planes = inputDims;
    planes.d[0] = 1;
    planes.d[1] = inputPlanes;
    inputHostCapacity = std::max(inputSize, inputByteSize(planes));
    inputDeviceCapacity = inputSize;
    cudaError_t error = allocateDevice(inputSize, &inputDevice);
    if (error == cudaSuccess) {
        inputHost = allocateHost(inputHostCapacity);
        error = inputHost ? cudaSuccess : cudaErrorMemoryAllocation;
    }
    if (error != cudaSuccess) {
        LOG(ERROR) << "CRNN trt input cuda memory allocation failed, size = " << inputSize << " bytes";
        logCudaError(error);
        return false;
    }
    return true;
}

bool CRNNTRTDetector::bindOutputs()
{
    outputs.resize(config.output_layers.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        outputs[i].name = config.output_layers[i];
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (!checkOutputBinding(i)) {
            return false;
        }
        OutputTensor& output = outputs[i];
        // The steps at the full width; every inference replaces them by the actual ones.
        setShape(
            output, context->getBindingDimensions(static_cast<std::int32_t>(i) + 1), config.width / pixelsPerTimeStep);
        output.hostBuffer = allocateHost(output.byteSize);
        const cudaError_t error
            = output.hostBuffer ? allocateDevice(output.byteSize, &output.deviceBuffer) : cudaErrorMemoryAllocation;
        if (error != cudaSuccess) {
            LOG(ERROR) << "CRNN trt output" << output.name
                       << "cuda memory allocation failed, size = " << output.byteSize << " bytes";
            logCudaError(error);
            return false;
        }
        outputCapacities.push_back(output.byteSize);
    }
    return true;
}

bool CRNNTRTDetector::makeStream()
{
    const cudaError_t error = cudaStreamCreate(&stream);
    if (error != cudaSuccess) {
        LOG(ERROR) << "CRNN trt cuda stream creation failed.";
        logCudaError(error);
        return false;
    }
    return true;
}

bool CRNNTRTDetector::setInputWidth(std::int32_t width)
{
    inputDims.d[widthExtent] = width;
    if (!context->setBindingDimensions(0, inputDims)) {
        LOG(ERROR) << "Configuration for CRNN trt input setBindingDimensions error.";
        return false;
    }
    inputSize = inputByteSize(inputDims);
    return true;
}

bool CRNNTRTDetector::checkOutputBinding(std::size_t index) const
{
    const std::string& name = config.output_layers[index];
    if (engine->getBindingIndex(name.c_str()) != static_cast<std::int32_t>(index) + 1) {
        LOG(ERROR) << "Get CRNN trt engine output binding failed for layer: " << name;
        return false;
    }
    return true;
}

bool CRNNTRTDetector::detect(cv::Mat image, std::vector<std::string>& characters)
{
    characters.clear();
    if (image.empty()) {
        LOG(ERROR) << "Invalid input image for CRNN trt detecting.";
        return false;
    }
    if (!ready) {
        LOG(ERROR) << "CRNN trt engine had not been initialized successfully.";
        return false;
    }
    VLOG(0) << "CRNN trt detect with image size: " << image.cols << "x" << image.rows << "x" << image.channels();
    cv::Mat input;
    if (!preProcess(image, input, networkSize(image))) {
        LOG(ERROR) << "CRNN trt pre-processing failed.";
        return false;
    }
    if (!submitRequest(std::move(input), image.size(), characters)) {
        LOG(ERROR) << "CRNN trt request inference failed.";
        return false;
    }
    VLOG(0) << "CRNN trt detected " << characters.size() << " character(s).";
    return true;
}

/// The network's input size that keeps the image's aspect ratio, within the widths that can be run.
cv::Size CRNNTRTDetector::networkSize(const cv::Mat& image) const
{
    // Limited before it becomes an integer: the width that a very flat image asks for does not fit into one.
    const double wanted = static_cast<double>(image.cols) / image.rows * config.height;
    return {static_cast<int>(std::min<double>(std::max<double>(wanted, modellimits::narrowestWidth), config.width)),
        config.height};
}

bool CRNNTRTDetector::infer(cv::Mat image, const cv::Size& /*sourceSize*/, std::vector<std::string>& characters)
{
    if (!setInputWidth(image.cols) || !copyInput(image) || !runNetwork() || !updateOutputShapes() || !copyOutputs()) {
        return false;
    }
    VLOG(0) << "Decode CRNN TensorRT output tensors.";
    decodeOCR(characters);
    if (leftOutCharacter()) {
        // What is left of the reading could pass for a right one.
        characters.clear();
        return false;
    }
    return true;
}

bool CRNNTRTDetector::copyInput(const cv::Mat& image)
{
    const std::int64_t planeElements = std::int64_t{image.rows} * image.cols;
    if (image.type() != CV_32FC3 || planeElements * inputPlanes * floatBytes > inputHostCapacity
        || inputSize > inputDeviceCapacity) {
        LOG(ERROR) << "CRNN trt input buffer does not hold an image of size: " << image.cols << "x" << image.rows;
        return false;
    }
    std::vector<cv::Mat> planes;
    for (int channel = 0; channel < inputPlanes; ++channel) {
        planes.emplace_back(image.rows, image.cols, CV_32F, inputHost + planeElements * channel);
    }
    cv::split(image, planes);
    // The copy includes planes beyond the third, where an earlier, wider picture may have left values.
    const std::int64_t split = planeElements * inputPlanes;
    std::fill(inputHost + split, inputHost + std::max(split, inputSize / floatBytes), 0.0F);

    const auto bytes = static_cast<std::size_t>(inputSize);
    const cudaError_t error = cudaMemcpyAsync(inputDevice, inputHost, bytes, cudaMemcpyHostToDevice, stream);
    if (error != cudaSuccess) {
        LOG(ERROR) << "CRNN trt CUDA memory copy of input failed, size = " << inputSize << " bytes";
        logCudaError(error);
        return false;
    }
    return true;
}

bool CRNNTRTDetector::runNetwork()
{
    VLOG(0) << "Run CRNN trt engine inference.";
    std::vector<void*> bindings = {inputDevice};
    for (const OutputTensor& output : outputs) {
        bindings.push_back(output.deviceBuffer);
    }
    if (!context->enqueueV2(bindings.data(), stream, nullptr)) {
        LOG(ERROR) << "CRNN TensorRT inference failed.";
        return false;
    }
    const cudaError_t error = cudaStreamSynchronize(stream);
    if (error != cudaSuccess) {
        LOG(ERROR) << "CRNN trt enqueueV2 cuda stream synchronize failed: " << cudaGetErrorString(error);
        return false;
    }
    return true;
}

bool CRNNTRTDetector::updateOutputShapes()
{
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (!checkOutputBinding(i)) {
            return false;
        }
        OutputTensor& output = outputs[i];
        const nvinfer1::Dims dims = context->getBindingDimensions(static_cast<std::int32_t>(i) + 1);
        setShape(output, dims, dims.d[0]);
        // Both what is copied and what the decoder reads must fit. An engine whose output is larger than it was at the
        // full width is not trusted.
        const std::int64_t decoded
            = std::int64_t{std::max(output.timeSteps, 0)} * std::max(output.numClasses, 0) * floatBytes;
        if (output.byteSize < 0 || std::max(output.byteSize, decoded) > outputCapacities[i]) {
            LOG(ERROR) << "CRNN trt output buffer does not hold the tensor of layer: " << output.name;
            return false;
        }
    }
    return true;
}

bool CRNNTRTDetector::copyOutputs()
{
    for (const OutputTensor& output : outputs) {
        const auto bytes = static_cast<std::size_t>(output.byteSize);
        const cudaError_t error
            = cudaMemcpyAsync(output.hostBuffer, output.deviceBuffer, bytes, cudaMemcpyDeviceToHost, stream);
        if (error != cudaSuccess) {
            LOG(ERROR) << "CRNN trt CUDA memory copy of output " << output.name << " failed, size = " << output.byteSize
                       << " bytes";
            logCudaError(error);
            return false;
        }
    }
    const cudaError_t error = cudaStreamSynchronize(stream);
    if (error != cudaSuccess) {
        LOG(ERROR) << "CRNN trt cuda stream synchronize failed: " << cudaGetErrorString(error);
        return false;
    }
    return true;
}
