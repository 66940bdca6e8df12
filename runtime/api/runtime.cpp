#include "NvInfer.h"

#include "context.h"
#include "guarded.h"

#include <algorithm>
#include <new>

namespace scribo::cpu {

namespace {

class Engine final : public nvinfer1::ICudaEngine
{
public:
    Engine(std::shared_ptr<Model> model, nvinfer1::ILogger& logger)
        : model(std::move(model))
        , logger(logger)
    {
    }

    nvinfer1::IExecutionContext* createExecutionContext() noexcept override
    {
        nvinfer1::IExecutionContext* context = nullptr;
        guarded(logger, "createExecutionContext", [&]() -> Result<void> {
            context = new Context(model, logger);
            return {};
        });
        return context;
    }

    std::int32_t getNbBindings() const noexcept override { return static_cast<std::int32_t>(model->bindings().size()); }

    std::int32_t getBindingIndex(const char* name) const noexcept override
    {
        const std::vector<Binding>& bindings = model->bindings();
        const auto found = std::find_if(
            bindings.begin(), bindings.end(), [name](const Binding& binding) { return name && binding.name == name; });
        return found == bindings.end() ? -1 : static_cast<std::int32_t>(found - bindings.begin());
    }

private:
    /// Contexts share it, so that one that outlives its engine by mistake does no harm.
    std::shared_ptr<Model> model;
    nvinfer1::ILogger& logger;
};

class Runtime final : public nvinfer1::IRuntime
{
public:
    explicit Runtime(nvinfer1::ILogger& logger)
        : logger(logger)
    {
    }

    nvinfer1::ICudaEngine* deserializeCudaEngine(const void* blob, std::size_t size) noexcept override
    {
        nvinfer1::ICudaEngine* engine = nullptr;
        guarded(logger, "deserializeCudaEngine", [&] {
            return Model::load(blob, size).map([&](std::shared_ptr<Model> model) {
                engine = new Engine(std::move(model), logger);
            });
        });
        return engine;
    }

private:
    nvinfer1::ILogger& logger;
};

} // namespace

} // namespace scribo::cpu

void* createInferRuntime_INTERNAL(void* logger, std::int32_t version) noexcept
{
    if (!logger || version != NV_TENSORRT_VERSION) {
        return nullptr;
    }
    nvinfer1::IRuntime* runtime = new (std::nothrow) scribo::cpu::Runtime(*static_cast<nvinfer1::ILogger*>(logger));
    return runtime;
}
