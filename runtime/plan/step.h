#pragma once

#include "buffer.h"

#include "threads/helper.h"

#include <oneapi/dnnl/dnnl.hpp>

#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace scribo::cpu {

/// One piece of a run. Bound to addresses before its first run and whenever they change.
class Step
{
public:
    virtual ~Step() = default;
    virtual void bind(const Addresses& addresses) = 0;
    virtual void run(dnnl::stream& stream, const Crew& crew) = 0;
};

/// A oneDNN primitive.
class PrimitiveStep : public Step
{
public:
    /// An argument in a buffer of the plan.
    struct Argument
    {
        int role;
        BufferId buffer;
        dnnl::memory::desc layout;
    };

    /// `memories` holds the arguments that never move, by role.
    PrimitiveStep(dnnl::primitive primitive, std::vector<Argument> arguments,
        std::unordered_map<int, dnnl::memory> memories, dnnl::engine engine)
        : primitive(std::move(primitive))
        , arguments(std::move(arguments))
        , memories(std::move(memories))
        , engine(std::move(engine))
    {
    }

    void bind(const Addresses& addresses) override
    {
        for (const Argument& argument : arguments) {
            memories[argument.role] = dnnl::memory(argument.layout, engine, addresses.at(argument.buffer));
        }
    }

    void run(dnnl::stream& stream, const Crew&) override { primitive.execute(stream, memories); }

private:
    dnnl::primitive primitive;
    std::vector<Argument> arguments;
    std::unordered_map<int, dnnl::memory> memories;
    dnnl::engine engine;
};

/// A kernel of our own: gets the addresses of its buffers, in the order in which they were named. It is called once for
/// each of its parts, which do not depend on each other.
class KernelStep : public Step
{
public:
    using Kernel = std::function<void(float* const* operands, int part)>;

    KernelStep(std::vector<BufferId> buffers, int parts, Kernel kernel)
        : buffers(std::move(buffers))
        , parts(parts)
        , kernel(std::move(kernel))
        , operands(this->buffers.size())
    {
    }

    void bind(const Addresses& addresses) override
    {
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            operands[i] = addresses.floats(buffers[i]);
        }
    }

    void run(dnnl::stream&, const Crew& crew) override
    {
        crew.share(parts, [this](int part) { kernel(operands.data(), part); });
    }

private:
    std::vector<BufferId> buffers;
    int parts;
    Kernel kernel;
    std::vector<float*> operands;
};

} // namespace scribo::cpu
