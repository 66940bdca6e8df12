#include "session.h"

#include <map>

namespace scribo::test {

namespace {

std::size_t byteSize(const Array& array)
{
    return array.data.size() * sizeof(float);
}

Shape toShape(const nvinfer1::Dims& dims)
{
    return {dims.d, dims.d + dims.nbDims};
}

} // namespace

void* deviceBuffer(std::size_t slot, std::size_t size)
{
    thread_local std::map<std::size_t, std::pair<void*, std::size_t>> buffers;
    auto& [pointer, room] = buffers[slot];
    if (room < size) {
        room = size * 2;
        if (cudaMalloc(&pointer, room) != cudaSuccess) {
            std::abort();
        }
    }
    return pointer;
}

Session::Session(const std::vector<std::uint8_t>& bytes)
    : runtime(nvinfer1::createInferRuntime(reports))
    , cudaEngine(runtime->deserializeCudaEngine(bytes.data(), bytes.size()))
    , context(cudaEngine ? cudaEngine->createExecutionContext() : nullptr)
{
}

std::vector<Array> Session::run(const Array& input)
{
    nvinfer1::Dims dims;
    dims.nbDims = static_cast<std::int32_t>(input.shape.size());
    for (std::size_t axis = 0; axis < input.shape.size(); ++axis) {
        dims.d[axis] = static_cast<std::int32_t>(input.shape[axis]);
    }
    if (!context->setBindingDimensions(0, dims)) {
        return {};
    }
    std::vector<Array> outputs;
    std::vector<void*> buffers = {deviceBuffer(0, byteSize(input))};
    for (int i = 1; i < cudaEngine->getNbBindings(); ++i) {
        outputs.push_back(Array::zeros(toShape(context->getBindingDimensions(i))));
        buffers.push_back(deviceBuffer(static_cast<std::size_t>(i), byteSize(outputs.back())));
    }
    if (cudaMemcpyAsync(buffers[0], input.data.data(), byteSize(input), cudaMemcpyHostToDevice, nullptr) != cudaSuccess
        || !context->enqueueV2(buffers.data(), nullptr, nullptr) || cudaStreamSynchronize(nullptr) != cudaSuccess) {
        return {};
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (cudaMemcpyAsync(
                outputs[i].data.data(), buffers[i + 1], byteSize(outputs[i]), cudaMemcpyDeviceToHost, nullptr)
            != cudaSuccess) {
            return {};
        }
    }
    return outputs;
}

} // namespace scribo::test
