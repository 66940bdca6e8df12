#pragma once

#include "NvInfer.h"

#include "plan/model.h"
#include "plan/plancache.h"
#include "plan/runner.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace scribo::cpu {

/// Runs a model: keeps a plan for every width it has seen, and the arena that they take turns in.
class Context final : public nvinfer1::IExecutionContext
{
public:
    /// Throws dnnl::error and std::bad_alloc.
    Context(std::shared_ptr<Model> source, nvinfer1::ILogger& reports);

    nvinfer1::Dims getBindingDimensions(std::int32_t bindingIndex) const noexcept override;
    bool setBindingDimensions(std::int32_t bindingIndex, nvinfer1::Dims dimensions) noexcept override;
    bool enqueueV2(void* const* bindings, cudaStream_t stream, cudaEvent_t* inputConsumed) noexcept override;

private:
    template <class Action>
    bool alone(const char* what, Action action) const noexcept;
    bool checkBinding(std::int32_t index, std::string* error) const;
    bool checkDimensions(const nvinfer1::Dims& dimensions, std::string* error) const;
    bool checkBuffers(void* const* bindings, std::string* error) const;
    bool setWidth(int width, std::string* error);
    bool run(void* const* bindings, cudaStream_t stream, std::string* error);

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
