#pragma once

#include "buildoptions.h"
#include "faults.h"

#include "engine_generated.h"

#include <cstddef>
#include <memory>

namespace scribo::builder {

/// The network of the ONNX model in the `size` bytes at `bytes`, folded, fused and with its shapes
/// checked at every width of the options; or everything in the model that stands in the way. Throws
/// nothing but std::bad_alloc.
Checked<std::unique_ptr<format::NetworkT>> buildNetwork(
    const void* bytes, std::size_t size, const BuildOptions& options);

} // namespace scribo::builder
