#include "weightstore.h"

namespace scribo::cpu {

dnnl::memory WeightStore::get(
    Key key, const Layout& layout, const dnnl::engine& engine, const std::function<Weights()>& make)
{
    const std::lock_guard lock(mutex);
    std::list<Entry>& known = entries[key];
    for (const Entry& entry : known) {
        if (entry.layout == layout) {
            return entry.memory;
        }
    }
    Weights weights = make();
    float* source = weights.own.empty() ? const_cast<float*>(weights.data) : weights.own.data();
    dnnl::memory from(weights.layout, engine, source);
    if (weights.own.empty() && weights.layout == layout) {
        known.push_back({layout, std::nullopt, from});
        return from;
    }
    AlignedBuffer buffer(layout.get_size());
    dnnl::memory to(layout, engine, buffer.data());
    dnnl::stream stream(engine);
    dnnl::reorder(from, to).execute(stream, from, to);
    stream.wait();
    known.push_back({layout, std::move(buffer), to});
    return to;
}

std::size_t WeightStore::size() const
{
    const std::lock_guard lock(mutex);
    std::size_t total = 0;
    for (const auto& [key, layouts] : entries) {
        for (const Entry& entry : layouts) {
            total += entry.buffer ? entry.buffer->size() : 0;
        }
    }
    return total;
}

} // namespace scribo::cpu
