#include "runtimedouble.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace {

constexpr int numClasses = 4;

RuntimeDouble& script()
{
    return RuntimeDouble::instance();
}

void record(const std::string& call)
{
    script().calls.push_back(call);
}

std::size_t elementCount(const nvinfer1::Dims& dims)
{
    std::size_t count = 1;
    for (int i = 0; i < dims.nbDims; ++i) {
        count *= static_cast<std::size_t>(dims.d[i]);
    }
    return count;
}

/// Whether `size` bytes at `pointer` lie inside one allocation of device memory.
bool isDeviceRange(const void* pointer, std::size_t size)
{
    const char* const begin = static_cast<const char*>(pointer);
    return std::any_of(script().deviceMemory.begin(), script().deviceMemory.end(), [&](const auto& allocation) {
        return begin >= allocation.first && begin + size <= allocation.first + allocation.second;
    });
}

bool isStream(cudaStream_t stream)
{
    return script().streamWork.count(stream) != 0;
}

class ContextDouble : public nvinfer1::IExecutionContext
{
public:
    ~ContextDouble() noexcept override { record("~context"); }

    nvinfer1::Dims getBindingDimensions(std::int32_t binding) const noexcept override
    {
        return binding == 0 ? dims : script().outputDims(binding, dims.d[3]);
    }

    bool setBindingDimensions(std::int32_t binding, nvinfer1::Dims dimensions) noexcept override
    {
        record("setDimensions " + std::to_string(binding) + " width " + std::to_string(dimensions.d[3]));
        if (!script().acceptsDimensions) {
            return false;
        }
        dims = dimensions;
        return true;
    }

    bool enqueueV2(void* const* bindings, cudaStream_t stream, cudaEvent_t* inputConsumed) noexcept override
    {
        record(inputConsumed ? "enqueue with event" : "enqueue");
        if (!script().acceptsRuns || !isStream(stream)) {
            return false;
        }
        const std::vector<void*> buffers(bindings, bindings + script().bindingNames.size());
        script().streamWork[stream].emplace_back([buffers, this] { run(buffers); });
        return true;
    }

private:
    void run(const std::vector<void*>& buffers)
    {
        NetworkRun networkRun;
        networkRun.inputDims = dims;
        const auto* const input = static_cast<const float*>(buffers[0]);
        networkRun.input.assign(input, input + elementCount(dims));
        for (std::size_t i = 1; i < buffers.size(); ++i) {
            networkRun.outputs.emplace_back(elementCount(getBindingDimensions(static_cast<std::int32_t>(i))));
        }
        script().network(networkRun);
        for (std::size_t i = 1; i < buffers.size(); ++i) {
            const std::vector<float>& output = networkRun.outputs[i - 1];
            if (!isDeviceRange(buffers[i], output.size() * sizeof(float))) {
                throw std::logic_error("an output binding is no device buffer of its size");
            }
            std::copy(output.begin(), output.end(), static_cast<float*>(buffers[i]));
        }
        script().runs.push_back(std::move(networkRun));
    }

    nvinfer1::Dims dims = script().inputDims;
};

class EngineDouble : public nvinfer1::ICudaEngine
{
public:
    ~EngineDouble() noexcept override { record("~engine"); }

    nvinfer1::IExecutionContext* createExecutionContext() noexcept override
    {
        return script().makesContext ? new ContextDouble : nullptr;
    }

    std::int32_t getNbBindings() const noexcept override
    {
        return static_cast<std::int32_t>(script().bindingNames.size());
    }

    std::int32_t getBindingIndex(const char* name) const noexcept override
    {
        record(std::string("bindingIndex ") + name);
        const std::vector<std::string>& names = script().bindingNames;
        const auto found = std::find(names.begin(), names.end(), name);
        return found == names.end() ? -1 : static_cast<std::int32_t>(found - names.begin());
    }
};

class RuntimeImpl : public nvinfer1::IRuntime
{
public:
    ~RuntimeImpl() noexcept override { record("~runtime"); }

    nvinfer1::ICudaEngine* deserializeCudaEngine(const void* blob, std::size_t size) noexcept override
    {
        script().engineBytes.assign(static_cast<const char*>(blob), size);
        return script().makesEngine ? new EngineDouble : nullptr;
    }
};

} // namespace

RuntimeDouble& RuntimeDouble::instance()
{
    static auto* const script = new RuntimeDouble;
    return *script;
}

void RuntimeDouble::reset()
{
    for (const auto& allocation : instance().deviceMemory) {
        std::free(allocation.first);
    }
    instance() = RuntimeDouble();
    instance().inputDims = makeDims({1, 3, 32, -1});
    instance().outputDims = [](std::int32_t /*binding*/, std::int32_t width) {
        return makeDims({width / 4, 1, numClasses});
    };
    instance().network = [](NetworkRun& /*run*/) {};
}

int RuntimeDouble::callCount(const std::string& prefix) const
{
    return static_cast<int>(std::count_if(calls.begin(), calls.end(),
        [&](const std::string& call) { return call.compare(0, prefix.size(), prefix) == 0; }));
}

nvinfer1::Dims makeDims(std::initializer_list<std::int32_t> extents)
{
    nvinfer1::Dims dims = {};
    dims.nbDims = static_cast<std::int32_t>(extents.size());
    std::copy(extents.begin(), extents.end(), dims.d);
    return dims;
}

std::vector<float> scoresOf(const std::vector<int>& classes)
{
    std::vector<float> scores(classes.size() * numClasses, 0.05F);
    for (std::size_t t = 0; t < classes.size(); ++t) {
        scores[t * numClasses + static_cast<std::size_t>(classes[t])] = 0.9F;
    }
    return scores;
}

extern "C" void* createInferRuntime_INTERNAL(void* logger, std::int32_t version) noexcept
{
    record("createRuntime");
    script().logger = static_cast<nvinfer1::ILogger*>(logger);
    script().version = version;
    return script().makesRuntime ? new RuntimeImpl : nullptr;
}

extern "C" cudaError_t cudaMalloc(void** pointer, std::size_t size)
{
    record("malloc " + std::to_string(size));
    if (script().failingMallocs.count(++script().mallocs) != 0) {
        return cudaErrorMemoryAllocation;
    }
    *pointer = std::malloc(size);
    script().deviceMemory[static_cast<char*>(*pointer)] = size;
    return cudaSuccess;
}

extern "C" cudaError_t cudaMemcpyAsync(
    void* destination, const void* source, std::size_t size, cudaMemcpyKind kind, cudaStream_t stream)
{
    const bool toDevice = kind == cudaMemcpyHostToDevice;
    record("copy " + std::to_string(size) + (toDevice ? " to device" : " to host"));
    if (script().failingCopies.count(++script().copies) != 0 || !isStream(stream)) {
        return cudaErrorInvalidValue;
    }
    if (!isDeviceRange(toDevice ? destination : source, size)) {
        throw std::logic_error("a copy outside device memory");
    }
    script().streamWork[stream].emplace_back([=] { std::memcpy(destination, source, size); });
    return cudaSuccess;
}

extern "C" cudaError_t cudaStreamCreate(cudaStream_t* stream)
{
    record("createStream");
    if (!script().createsStreams) {
        return cudaErrorUnknown;
    }
    *stream = reinterpret_cast<cudaStream_t>(script().streamWork.size() + 1);
    script().streamWork[*stream] = {};
    return cudaSuccess;
}

extern "C" cudaError_t cudaStreamSynchronize(cudaStream_t stream)
{
    record("synchronize");
    if (!isStream(stream)) {
        return cudaErrorInvalidValue;
    }
    const std::vector<std::function<void()>> work = std::exchange(script().streamWork[stream], {});
    if (script().failingSynchronizations.count(++script().synchronizations) != 0) {
        return cudaErrorUnknown;
    }
    for (const std::function<void()>& step : work) {
        step();
    }
    return cudaSuccess;
}

extern "C" const char* cudaGetErrorString(cudaError_t error)
{
    switch (error) {
    case cudaErrorInvalidValue:
        return "invalid value, says the double";
    case cudaErrorMemoryAllocation:
        return "out of memory, says the double";
    default:
        return "unknown error, says the double";
    }
}
