#include "context.h"

#include "guarded.h"

#include "cuda/devicememory.h"
#include "cuda/streams.h"
#include "operations/planner.h"
#include "plan/singlethread.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

using nvinfer1::Dims;

constexpr std::size_t widthAxis = 3;

std::size_t floatBytes(const Shape& shape)
{
    return static_cast<std::size_t>(countElements(shape)) * sizeof(float);
}

Dims toDims(const Shape& shape)
{
    Dims dims;
    dims.nbDims = static_cast<std::int32_t>(shape.size());
    std::transform(
        shape.begin(), shape.end(), dims.d, [](std::int64_t extent) { return static_cast<std::int32_t>(extent); });
    return dims;
}

std::string title(const std::vector<Binding>& bindings, std::size_t index)
{
    return "binding " + std::to_string(index) + " ('" + bindings[index].name + "')";
}

/// What is wrong with a buffer that is to hold `size` bytes of floats; empty when nothing is.
std::string bufferFault(const void* buffer, std::size_t size)
{
    const DeviceMemory& memory = DeviceMemory::instance();
    if (!buffer) {
        return "is null";
    }
    if (!memory.contains(buffer, 1)) {
        return "is not device memory";
    }
    if (!memory.contains(buffer, size)) {
        return "is too small, it takes " + std::to_string(size) + " bytes";
    }
    if (reinterpret_cast<std::uintptr_t>(buffer) % alignof(float) != 0) {
        return "is not aligned for floats";
    }
    return {};
}

bool overlap(const void* a, std::size_t aSize, const void* b, std::size_t bSize)
{
    const auto first = reinterpret_cast<std::uintptr_t>(a);
    const auto second = reinterpret_cast<std::uintptr_t>(b);
    return first < second + bSize && second < first + aSize;
}

} // namespace

Context::Context(std::shared_ptr<Model> model, nvinfer1::ILogger& logger)
    : model(std::move(model))
    , logger(logger)
    , runner(this->model->engine())
{
}

/// Carries out `action` unless another thread is at work in this context. What it has to report is
/// still part of it.
template <class Action>
bool Context::alone(const char* what, Action action) const noexcept
{
    if (busy.exchange(true, std::memory_order_acquire)) {
        return guarded(
            logger, what, []() -> Result<void> { return failure("the context is in use by another thread"); });
    }
    const bool done = guarded(logger, what, action);
    busy.store(false, std::memory_order_release);
    return done;
}

Result<void> Context::checkBinding(std::int32_t index) const
{
    const auto count = static_cast<std::int32_t>(model->bindings().size());
    if (index < 0 || index >= count) {
        return failure("binding " + std::to_string(index) + " does not exist, the engine has " + std::to_string(count));
    }
    return {};
}

Dims Context::getBindingDimensions(std::int32_t bindingIndex) const noexcept
{
    Dims dims;
    dims.nbDims = -1;
    alone("getBindingDimensions", [&] {
        return checkBinding(bindingIndex).map([&] {
            const auto i = static_cast<std::size_t>(bindingIndex);
            dims = toDims(current ? current->bindingShapes()[i] : model->bindings()[i].shape);
        });
    });
    return dims;
}

Result<void> Context::checkDimensions(const Dims& dimensions) const
{
    const Shape& expected = model->bindings().front().shape;
    if (dimensions.nbDims != static_cast<std::int32_t>(expected.size())) {
        return failure("the input has " + std::to_string(expected.size()) + " dimensions, not "
            + std::to_string(dimensions.nbDims));
    }
    for (std::size_t axis = 0; axis < widthAxis; ++axis) {
        if (dimensions.d[axis] != expected[axis]) {
            return failure("dimension " + std::to_string(axis) + " of the input is " + std::to_string(expected[axis])
                + ", not " + std::to_string(dimensions.d[axis]));
        }
    }
    const int width = dimensions.d[widthAxis];
    const format::Network& network = model->network();
    if (width < network.minimum_width() || width > network.maximum_width()) {
        return failure("a width of " + std::to_string(width) + " lies outside the engine's range of "
            + std::to_string(network.minimum_width()) + " to " + std::to_string(network.maximum_width()));
    }
    return {};
}

bool Context::setBindingDimensions(std::int32_t bindingIndex, Dims dimensions) noexcept
{
    return alone("setBindingDimensions", [&] {
        return checkBinding(bindingIndex)
            .and_then([&]() -> Result<void> {
                if (bindingIndex == 0) {
                    return checkDimensions(dimensions);
                }
                return failure(title(model->bindings(), static_cast<std::size_t>(bindingIndex))
                    + " is an output, its dimensions follow from the input's");
            })
            .and_then([&] { return setWidth(dimensions.d[widthAxis]); });
    });
}

Result<void> Context::setWidth(int width)
{
    if (current && current->width() == width) {
        return {};
    }
    Plan* plan = plans.find(width);
    std::unique_ptr<Plan> made;
    if (!plan) {
        const SingleThread single;
        Result<std::unique_ptr<Plan>> planned = makePlan(*model, width);
        if (!planned) {
            return tl::unexpected(planned.error());
        }
        made = std::move(*planned);
    }
    const std::size_t needed = (plan ? plan : made.get())->arenaSize();
    if (!arena || arena->size() < needed) {
        // Made before the old one goes: without the memory for it, the width set before must still run.
        AlignedBuffer larger(needed);
        arena = std::move(larger);
    }
    current = plan ? plan : plans.insert(std::move(made));
    return {};
}

Result<void> Context::checkBuffers(void* const* bindings) const
{
    const std::vector<Shape>& shapes = current->bindingShapes();
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        std::string fault = bufferFault(bindings[i], floatBytes(shapes[i]));
        for (std::size_t j = 0; fault.empty() && j < i; ++j) {
            if (overlap(bindings[i], floatBytes(shapes[i]), bindings[j], floatBytes(shapes[j]))) {
                fault = "overlaps that of " + title(model->bindings(), j);
            }
        }
        if (!fault.empty()) {
            return failure("the buffer of " + title(model->bindings(), i) + " " + fault);
        }
    }
    return {};
}

Result<void> Context::run(void* const* bindings, cudaStream_t stream)
{
    if (!current) {
        return failure("the dimensions of the input have not been set");
    }
    if (!bindings) {
        return failure("there is no list of buffers");
    }
    if (!isStream(stream)) {
        return failure("the stream does not exist");
    }
    if (Result<void> checked = checkBuffers(bindings); !checked) {
        return checked;
    }
    current->bind(arena->data(), bindings);
    runner.run(*current);
    return {};
}

bool Context::enqueueV2(void* const* bindings, cudaStream_t stream, cudaEvent_t*) noexcept
{
    return alone("enqueueV2", [&] { return run(bindings, stream); });
}

} // namespace scribo::cpu
