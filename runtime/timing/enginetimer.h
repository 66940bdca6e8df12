#pragma once

#include "result.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace scribo::cpu {

/// What runs of an engine at one width took, in milliseconds, and what they need.
struct WidthTimes
{
    double first = 0; ///< the first run of the width: planning, making the kernels, and running
    double median = 0; ///< on one thread
    double best = 0;
    double helped = 0; ///< the median with the runtime's second thread; 0 where it cannot be had
    int threads = 1; ///< what the runtime would choose
    std::size_t planBytes = 0; ///< of the plan and its working memory
};

/// Times an engine below the runtime's public interface, where its plans and steps can be seen. A run goes from the
/// input to the outputs in buffers that stand already. Used by one thread at a time.
class EngineTimer
{
public:
    /// Gives the `size` values that a picture, or a result before its first run, begins with.
    using Picture = std::function<std::vector<float>(std::size_t size)>;

    explicit EngineTimer(Picture picture);
    ~EngineTimer();
    EngineTimer(const EngineTimer&) = delete;
    EngineTimer& operator=(const EngineTimer&) = delete;

    /// Takes the engine in `size` bytes, which need not outlive the call; the error is what the runtime says of one
    /// that it refuses. Throws std::bad_alloc.
    Result<void> load(const void* bytes, std::size_t size);

    // What follows needs a loaded engine.

    /// Milliseconds that loading took.
    double loadTime() const;
    /// Bytes of weights in the order that the kernels want, which all plans share.
    std::size_t weightBytes() const;

    /// Plans `width` anew and runs it `runs` times on one thread and as often on two, in turns, at least once. An error
    /// when it cannot be planned. Throws dnnl::error and std::bad_alloc.
    Result<WidthTimes> time(int width, int runs);
    /// Milliseconds of each operation of the network at the width that was timed last, on one thread, the median of
    /// `runs` runs; the last element is for what follows the operations. Throws dnnl::error and std::bad_alloc.
    std::vector<double> profile(int runs);

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace scribo::cpu
