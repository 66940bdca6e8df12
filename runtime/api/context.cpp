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

Context::Context(std::shared_ptr<Model> source, nvinfer1::ILogger& reports)
    : model(std::move(source))
    , logger(reports)
    , runner(model->engine())
{
}

/// Carries out `action` unless another thread is at work in this context. What it has to report is
/// still part of it.
template <class Action>
bool Context::alone(const char* what, Action action) const noexcept
{
    if (busy.exchange(true, std::memory_order_acquire)) {
        return guarded(logger, what, [](std::string* error) {
            *error = "the context is in use by another thread";
            return false;
        });
    }
    const bool done = guarded(logger, what, action);
    busy.store(false, std::memory_order_release);
    return done;
}

bool Context::checkBinding(std::int32_t index, std::string* error) const
{
    const auto count = static_cast<std::int32_t>(model->bindings().size());
    if (index < 0 || index >= count) {
        *error = "binding " + std::to_string(index) + " does not exist, the engine has " + std::to_string(count);
        return false;
    }
    return true;
}

Dims Context::getBindingDimensions(std::int32_t bindingIndex) const noexcept
{
    Dims dims;
    dims.nbDims = -1;
    alone("getBindingDimensions", [&](std::string* error) {
        if (!checkBinding(bindingIndex, error)) {
            return false;
        }
        const auto i = static_cast<std::size_t>(bindingIndex);
        dims = toDims(current ? current->bindingShapes()[i] : model->bindings()[i].shape);
        return true;
    });
    return dims;
}

bool Context::checkDimensions(const Dims& dimensions, std::string* error) const
{
    const Shape& expected = model->bindings().front().shape;
    if (dimensions.nbDims != static_cast<std::int32_t>(expected.size())) {
        *error = "the input has " + std::to_string(expected.size()) + " dimensions, not "
            + std::to_string(dimensions.nbDims);
        return false;
    }
    for (std::size_t axis = 0; axis < widthAxis; ++axis) {
        if (dimensions.d[axis] != expected[axis]) {
            *error = "dimension " + std::to_string(axis) + " of the input is " + std::to_string(expected[axis])
                + ", not " + std::to_string(dimensions.d[axis]);
            return false;
        }
    }
    const int width = dimensions.d[widthAxis];
    const format::Network& network = model->network();
    if (width < network.minimum_width() || width > network.maximum_width()) {
        *error = "a width of " + std::to_string(width) + " lies outside the engine's range of "
            + std::to_string(network.minimum_width()) + " to " + std::to_string(network.maximum_width());
        return false;
    }
    return true;
}

bool Context::setBindingDimensions(std::int32_t bindingIndex, Dims dimensions) noexcept
{
    return alone("setBindingDimensions", [&](std::string* error) {
        if (!checkBinding(bindingIndex, error)) {
            return false;
        }
        if (bindingIndex != 0) {
            *error = title(model->bindings(), static_cast<std::size_t>(bindingIndex))
                + " is an output, its dimensions follow from the input's";
            return false;
        }
        return checkDimensions(dimensions, error) && setWidth(dimensions.d[widthAxis], error);
    });
}

bool Context::setWidth(int width, std::string* error)
{
    if (current && current->width() == width) {
        return true;
    }
    Plan* plan = plans.find(width);
    std::unique_ptr<Plan> made;
    if (!plan) {
        const SingleThread single;
        made = makePlan(*model, width, error);
        if (!made) {
            return false;
        }
    }
    const std::size_t needed = (plan ? plan : made.get())->arenaSize();
    if (!arena || arena->size() < needed) {
        // Made before the old one goes: without the memory for it, the width set before must still run.
        AlignedBuffer larger(needed);
        arena = std::move(larger);
    }
    current = plan ? plan : plans.insert(std::move(made));
    return true;
}

bool Context::checkBuffers(void* const* bindings, std::string* error) const
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
            *error = "the buffer of " + title(model->bindings(), i) + " " + fault;
            return false;
        }
    }
    return true;
}

bool Context::run(void* const* bindings, cudaStream_t stream, std::string* error)
{
    if (!current) {
        *error = "the dimensions of the input have not been set";
        return false;
    }
    if (!bindings) {
        *error = "there is no list of buffers";
        return false;
    }
    if (!isStream(stream)) {
        *error = "the stream does not exist";
        return false;
    }
    if (!checkBuffers(bindings, error)) {
        return false;
    }
    current->bind(arena->data(), bindings);
    runner.run(*current);
    return true;
}

bool Context::enqueueV2(void* const* bindings, cudaStream_t stream, cudaEvent_t*) noexcept
{
    return alone("enqueueV2", [&](std::string* error) { return run(bindings, stream, error); });
}

} // namespace scribo::cpu
