#pragma once

#include "alignedbuffer.h"
#include "result.h"
#include "weightstore.h"

#include <memory>
#include <string>
#include <vector>

namespace scribo::cpu {

/// An input or output of a network.
struct Binding
{
    std::string name;
    int tensor = -1;
    /// -1 where the width decides.
    Shape shape;
};

/// A network that has been found sound: the engine's bytes, what is known of its bindings, and the
/// weights that its plans share. All but the weights stay as they are after loading, so that any
/// number of contexts may use it at once.
class Model
{
public:
    /// An error when the bytes are not an intact engine that can be run at its smallest and its largest width; never
    /// null. Throws std::bad_alloc.
    static Result<std::shared_ptr<Model>> load(const void* bytes, std::size_t size);

    const format::Network& network() const { return *content; }
    /// The input, then the outputs.
    const std::vector<Binding>& bindings() const { return ends; }
    const dnnl::engine& engine() const { return processor; }
    WeightStore& weights() { return store; }

private:
    explicit Model(std::size_t size)
        : file(size)
    {
    }

    Result<void> findBindings();

    AlignedBuffer file;
    const format::Network* content = nullptr;
    std::vector<Binding> ends;
    dnnl::engine processor{dnnl::engine::kind::cpu, 0};
    WeightStore store;
};

} // namespace scribo::cpu
