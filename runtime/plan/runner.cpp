#include "runner.h"

#include "singlethread.h"

#include <chrono>

namespace scribo::cpu {

Runner::Runner(const dnnl::engine& processor)
    : stream(processor)
    , helper(Helper::ofProcess())
{
}

void Runner::run(Plan& plan)
{
    using Clock = std::chrono::steady_clock;
    const SingleThread single;
    const Helper::Run presence(*helper);
    const bool aloneBefore = presence.isAlone();
    const Clock::time_point start = Clock::now();
    bool helped = false;
    {
        const Crew crew = plan.threadChoice().wantsHelper() ? Crew(presence) : Crew();
        helped = crew.isHelped();
        plan.run(stream, crew);
    }
    // What a run takes beside another one says nothing of the two ways.
    if (aloneBefore && presence.isAlone()) {
        plan.threadChoice().record(helped, Clock::now() - start);
    }
}

} // namespace scribo::cpu
