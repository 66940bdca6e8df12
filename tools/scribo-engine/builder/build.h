#pragma once

#include "onnxnode.h"
#include "widthprofile.h"

#include <cstddef>
#include <memory>
#include <string>

namespace scribo::builder {

/// The widest picture that an engine can be made for.
constexpr int largestWidth = 4096;

struct BuildOptions
{
    WidthRange widths;
    /// The name of the ONNX file, kept in the engine for inspection.
    std::string source;
};

/// The network of the ONNX model in the `size` bytes at `bytes`, folded, fused and with its shapes
/// checked at every width of the options. Null, with a sentence for everything that stands in the
/// way in `problems`, when there is none. Throws nothing but std::bad_alloc.
std::unique_ptr<format::NetworkT> buildNetwork(
    const void* bytes, std::size_t size, const BuildOptions& options, Problems* problems);

} // namespace scribo::builder
