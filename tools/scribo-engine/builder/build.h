#pragma once

#include "buildoptions.h"
#include "onnxnode.h"

#include <cstddef>
#include <memory>

namespace scribo::builder {

/// The network of the ONNX model in the `size` bytes at `bytes`, folded, fused and with its shapes
/// checked at every width of the options. Null, with a sentence for everything that stands in the
/// way in `problems`, when there is none. Throws nothing but std::bad_alloc.
std::unique_ptr<format::NetworkT> buildNetwork(
    const void* bytes, std::size_t size, const BuildOptions& options, Problems* problems);

} // namespace scribo::builder
