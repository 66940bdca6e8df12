#pragma once

#include "alignedbuffer.h"
#include "layout.h"

#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace scribo::cpu {

/// Weights as a primitive takes them before oneDNN chooses its own order.
struct Weights
{
    Layout layout;
    /// Where they are: in the engine's bytes, or in `own`.
    const float* data = nullptr;
    std::vector<float> own;
};

/// The weights of a network in every layout that a plan has asked for. Each is made once and shared
/// by all plans for the life of the engine. May be used by several threads at once.
class WeightStore
{
public:
    /// Which weights: the operation's position in the network, and one of the DNNL_ARG_... numbers.
    using Key = std::pair<int, int>;

    /// The weights of `key` in `layout`. `make` is called only when no layout of them is known yet
    /// that would do. Throws std::bad_alloc and dnnl::error.
    dnnl::memory get(Key key, const Layout& layout, const dnnl::engine& engine, const std::function<Weights()>& make);

    /// Bytes held beside the engine's own.
    std::size_t size() const;

private:
    struct Entry
    {
        Layout layout;
        /// Nothing when the weights lie in the engine's bytes as they are wanted.
        std::optional<AlignedBuffer> buffer;
        dnnl::memory memory;
    };

    mutable std::mutex mutex;
    std::map<Key, std::list<Entry>> entries;
};

} // namespace scribo::cpu
