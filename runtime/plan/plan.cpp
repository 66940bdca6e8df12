#include "plan.h"

#include <algorithm>
#include <chrono>

namespace scribo::cpu {

std::size_t Plan::fixedSize() const
{
    std::size_t total = 0;
    for (const AlignedBuffer& buffer : fixed) {
        total += buffer.size();
    }
    return total;
}

void Plan::bind(void* arena, void* const* bindings)
{
    std::vector<void*> wanted = {arena};
    wanted.insert(wanted.end(), bindings, bindings + shapes.size());
    if (wanted == bound) {
        return;
    }
    // A step that fails to bind must not be taken for a bound one.
    bound.clear();
    const Addresses addresses(buffers, arena, bindings);
    for (const Entry& entry : steps) {
        entry.step->bind(addresses);
    }
    bound = std::move(wanted);
}

void Plan::run(dnnl::stream& stream, const Crew& crew)
{
    for (const Entry& entry : steps) {
        entry.step->run(stream, crew);
    }
    stream.wait();
}

std::vector<double> Plan::profile(dnnl::stream& stream)
{
    using Clock = std::chrono::steady_clock;
    std::vector<double> spent;
    for (const Entry& entry : steps) {
        const Clock::time_point start = Clock::now();
        entry.step->run(stream, Crew());
        stream.wait();
        const auto operation = static_cast<std::size_t>(entry.operation);
        spent.resize(std::max(spent.size(), operation + 1));
        spent[operation] += std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    }
    return spent;
}

} // namespace scribo::cpu
