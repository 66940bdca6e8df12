#pragma once

#include "NvInferRuntimeCommon.h"
#include "cuda_runtime_api.h"

#define NV_TENSORRT_MAJOR 8
#define NV_TENSORRT_MINOR 6
#define NV_TENSORRT_PATCH 1
#define NV_TENSORRT_VERSION 8601

namespace nvinfer1 {

/// Runs an engine: holds the current input dimensions and everything a run writes to.
/// Used by one thread at a time: a call that comes while another one is under way is refused.
class IExecutionContext
{
public:
    virtual ~IExecutionContext() noexcept = default;

    /// The current dimensions of a binding; an extent of -1 where the input's width decides it and
    /// none has been set. nbDims is -1 for an index that does not exist.
    virtual Dims getBindingDimensions(int32_t bindingIndex) const noexcept = 0;
    /// Sets the dimensions of an input binding. False, with an error to the logger, when they do
    /// not fit the engine's profile; the dimensions set before then stay. Cheap for dimensions that
    /// are set already; a width that was not used for long, or never, is planned first.
    virtual bool setBindingDimensions(int32_t bindingIndex, Dims dimensions) noexcept = 0;
    /// Runs the network on `bindings` (one device pointer per binding, in binding order). False,
    /// with an error to the logger, when the dimensions are not set or a buffer is too small, not
    /// device memory or shared with another binding. Rely on the results once
    /// cudaStreamSynchronize() on `stream` returns. Events do not exist here: `inputConsumed` is null.
    virtual bool enqueueV2(void* const* bindings, cudaStream_t stream, cudaEvent_t* inputConsumed) noexcept = 0;
};

/// A network that is ready to run. Shared by the contexts made from it, which it must outlive.
class ICudaEngine
{
public:
    virtual ~ICudaEngine() noexcept = default;

    /// A new context, owned by the caller; null, with an error to the logger, when there is none.
    virtual IExecutionContext* createExecutionContext() noexcept = 0;
    /// The number of inputs and outputs together.
    virtual int32_t getNbBindings() const noexcept = 0;
    /// The position of the input or output called `name`, or -1.
    virtual int32_t getBindingIndex(const char* name) const noexcept = 0;
};

/// Makes engines from their serialised form. Must outlive them.
class IRuntime
{
public:
    virtual ~IRuntime() noexcept = default;

    /// The engine in the `size` bytes at `blob`, which need not outlive the call; owned by the
    /// caller. Null, with one error to the logger, for anything that is not an intact engine.
    virtual ICudaEngine* deserializeCudaEngine(const void* blob, std::size_t size) noexcept = 0;
};

} // namespace nvinfer1

/// Entry point of the library. Null for another `version` than this header's.
extern "C" void* createInferRuntime_INTERNAL(void* logger, int32_t version) noexcept;

namespace nvinfer1 {

/// A runtime that reports to `logger`, which must outlive it. Owned by the caller.
inline IRuntime* createInferRuntime(ILogger& logger) noexcept
{
    return static_cast<IRuntime*>(createInferRuntime_INTERNAL(&logger, NV_TENSORRT_VERSION));
}

} // namespace nvinfer1
