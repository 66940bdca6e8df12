#pragma once

#include "alignedbuffer.h"
#include "step.h"

#include "graph/value.h"
#include "threads/threadchoice.h"

#include <memory>
#include <vector>

namespace scribo::cpu {

/// A network made ready for one width: the steps of a run and where their operands lie in an arena.
/// Used by one thread at a time; the model that it was made from must outlive it.
class Plan
{
public:
    /// Columns of the input.
    int width() const { return columns; }
    /// The extents of the bindings, in their order.
    const std::vector<Shape>& bindingShapes() const { return shapes; }
    /// Bytes of working memory that a run needs.
    std::size_t arenaSize() const { return arenaBytes; }
    /// Bytes of values that were worked out once, for all runs.
    std::size_t fixedSize() const;
    /// About how many bytes the plan holds, without the arena.
    std::size_t heldSize() const { return fixedSize() + steps.size() * stepSize; }

    /// Makes the following runs work in `arena` (arenaSize() bytes, cache line aligned) and on
    /// `bindings`, one address for each binding. Cheap when nothing has changed.
    void bind(void* arena, void* const* bindings);
    /// Carries out the steps. All results are there when it returns, the same ones whoever was in the crew. Throws
    /// dnnl::error.
    void run(dnnl::stream& stream, const Crew& crew);
    /// The same on the calling thread step by step, and how many microseconds were spent on each operation of the
    /// network; the last element is for what follows them. Throws dnnl::error and std::bad_alloc.
    std::vector<double> profile(dnnl::stream& stream);
    /// How its runs go best; kept by whoever runs it.
    ThreadChoice& threadChoice() { return choice; }

private:
    friend class PlanBuilder;

    /// Bytes of an average step, with oneDNN's descriptions and generated code; measured on 289
    /// widths of a network of 14 steps, which took 63 megabytes.
    static constexpr std::size_t stepSize = std::size_t(16) << 10;

    struct Entry
    {
        std::unique_ptr<Step> step;
        /// Position of the operation that it is part of; the number of operations for what follows them.
        int operation;
    };

    int columns = 0;
    std::vector<Shape> shapes;
    std::size_t arenaBytes = 0;
    std::vector<Buffer> buffers;
    std::vector<Entry> steps;
    std::vector<AlignedBuffer> fixed;
    /// The addresses that the steps are bound to: arena, then bindings.
    std::vector<void*> bound;
    ThreadChoice choice;
};

} // namespace scribo::cpu
