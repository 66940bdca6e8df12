#include "enginerunner.h"

namespace scribo::tool {

namespace {

std::size_t elements(const nvinfer1::Dims& dims)
{
    std::size_t count = 1;
    for (int axis = 0; axis < dims.nbDims; ++axis) {
        count *= static_cast<std::size_t>(dims.d[axis]);
    }
    return count;
}

} // namespace

void EngineRunner::ComplaintLog::log(Severity severity, const char* message) noexcept
{
    if (severity <= Severity::kERROR) {
        text = message;
    }
}

Result<void> EngineRunner::load(const void* bytes, std::size_t size)
{
    runtime.reset(nvinfer1::createInferRuntime(log));
    engine.reset(runtime ? runtime->deserializeCudaEngine(bytes, size) : nullptr);
    context.reset(engine ? engine->createExecutionContext() : nullptr);
    if (!context || cudaStreamCreate(&stream) != cudaSuccess) {
        return failure(log.text);
    }
    buffers.resize(static_cast<std::size_t>(engine->getNbBindings()));
    return {};
}

std::size_t EngineRunner::pictureSize(int width) const
{
    nvinfer1::Dims dims = context->getBindingDimensions(0);
    dims.d[3] = width;
    return elements(dims);
}

Result<std::vector<RunOutput>> EngineRunner::run(int width, const std::vector<float>& picture)
{
    log.text.clear();
    std::vector<RunOutput> outputs = prepare(width);
    if (outputs.empty() || !execute(picture, outputs)) {
        return failure(log.text.empty() ? "a copy to or from the runtime failed" : log.text);
    }
    return outputs;
}

bool EngineRunner::growBuffer(std::size_t binding, std::size_t bytes)
{
    Buffer& buffer = buffers[binding];
    if (buffer.bytes >= bytes) {
        return true;
    }
    buffer.bytes = bytes;
    return cudaMalloc(&buffer.memory, bytes) == cudaSuccess;
}

std::vector<RunOutput> EngineRunner::prepare(int width)
{
    nvinfer1::Dims dims = context->getBindingDimensions(0);
    dims.d[3] = width;
    if (!context->setBindingDimensions(0, dims)) {
        return {};
    }
    std::vector<RunOutput> outputs;
    for (std::size_t binding = 0; binding < buffers.size(); ++binding) {
        const nvinfer1::Dims extents = context->getBindingDimensions(static_cast<std::int32_t>(binding));
        if (!growBuffer(binding, elements(extents) * sizeof(float))) {
            return {};
        }
        if (binding > 0) {
            outputs.push_back({{extents.d, extents.d + extents.nbDims}, std::vector<float>(elements(extents))});
        }
    }
    return outputs;
}

bool EngineRunner::execute(const std::vector<float>& picture, std::vector<RunOutput>& outputs)
{
    std::vector<void*> bindings;
    for (const Buffer& buffer : buffers) {
        bindings.push_back(buffer.memory);
    }
    bool done
        = cudaMemcpyAsync(bindings[0], picture.data(), picture.size() * sizeof(float), cudaMemcpyHostToDevice, stream)
            == cudaSuccess
        && context->enqueueV2(bindings.data(), stream, nullptr) && cudaStreamSynchronize(stream) == cudaSuccess;
    for (std::size_t i = 0; done && i < outputs.size(); ++i) {
        std::vector<float>& values = outputs[i].values;
        done = cudaMemcpyAsync(
                   values.data(), bindings[i + 1], values.size() * sizeof(float), cudaMemcpyDeviceToHost, stream)
            == cudaSuccess;
    }
    return done && cudaStreamSynchronize(stream) == cudaSuccess;
}

std::vector<float> testPicture(std::size_t size)
{
    std::vector<float> values(size);
    // A linear congruential generator: no period that a picture's width could hide.
    std::uint32_t state = 1;
    for (float& value : values) {
        state = state * 1664525u + 1013904223u;
        value = static_cast<float>(state >> 8) / static_cast<float>(1 << 23) - 1;
    }
    return values;
}

} // namespace scribo::tool
