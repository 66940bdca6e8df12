#pragma once

#include "plan/model.h"
#include "plan/plan.h"
#include "threads/helper.h"

#include <QString>

#include <memory>
#include <vector>

namespace scribo::tool {

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
/// input to the outputs in buffers that stand already.
class EngineTimer
{
public:
    /// Takes the engine in `size` bytes. False, with a sentence in `error`, when the runtime refuses it.
    bool load(const void* bytes, std::size_t size, QString* error);

    /// Milliseconds that loading took.
    double loadTime() const { return loading; }
    /// Bytes of weights in the order that the kernels want, which all plans share.
    std::size_t weightBytes() const { return model->weights().size(); }

    /// Plans `width` anew and runs it `runs` times on one thread and as often on two, in turns, at least once. False,
    /// with a sentence in `error`, when it cannot be planned.
    bool time(int width, int runs, WidthTimes* times, QString* error);
    /// Milliseconds of each operation of the network at the width that was timed last, on one thread, the median of
    /// `runs` runs; the last element is for what follows the operations.
    std::vector<double> profile(int runs);

private:
    void bind();
    void timeRun(bool wantsHelper, dnnl::stream& stream, std::vector<double>* alone, std::vector<double>* withHelper);

    double loading = 0;
    std::shared_ptr<cpu::Model> model;
    std::shared_ptr<cpu::Helper> helper = cpu::Helper::ofProcess();
    std::unique_ptr<cpu::Plan> plan;
    std::unique_ptr<cpu::AlignedBuffer> arena;
    std::vector<std::vector<float>> bindings;
};

} // namespace scribo::tool
