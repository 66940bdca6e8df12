#pragma once

#include "NvInfer.h"
#include "result.h"

#include "plan/model.h"
#include "plan/plancache.h"
#include "plan/runner.h"

#include <atomic>
#include <memory>
#include <optional>

namespace scribo::cpu {

/// Runs a model: keeps a plan for every width it has seen, and the arena that they take turns in.
class Context final : public nvinfer1::IExecutionContext
{
public:
    /// Throws dnnl::error and std::bad_alloc.
    Context(std::shared_ptr<Model> model, nvinfer1::ILogger& logger);

    nvinfer1::Dims getBindingDimensions(std::int32_t bindingIndex) const noexcept override;
    bool setBindingDimensions(std::int32_t bindingIndex, nvinfer1::Dims dimensions) noexcept override;
    bool enqueueV2(void* const* bindings, cudaStream_t stream, cudaEvent_t* inputConsumed) noexcept override;

private:
    template <class Action>
    bool alone(const char* what, Action action) const noexcept;
    Result<void> checkBinding(std::int32_t index) const;
    Result<void> checkDimensions(const nvinfer1::Dims& dimensions) const;
    Result<void> checkBuffers(void* const* bindings) const;
    Result<void> setWidth(int width);
    Result<void> run(void* const* bindings, cudaStream_t stream);

    std::shared_ptr<Model> model;
    nvinfer1::ILogger& logger;
    Runner runner;
    PlanCache plans;
    /// The plan of the width that is set; null before one is.
    Plan* current = nullptr;
    std::optional<AlignedBuffer> arena;
    /// Whether an operation is under way: contexts are not for two threads at once.
    mutable std::atomic<bool> busy{false};
};

} // namespace scribo::cpu
