#include "plan.h"

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

void Plan::run(dnnl::stream& stream)
{
    for (const Entry& entry : steps) {
        entry.step->run(stream);
    }
    stream.wait();
}

} // namespace scribo::cpu
