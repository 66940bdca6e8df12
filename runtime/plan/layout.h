#pragma once

#include "graph/value.h"

#include <oneapi/dnnl/dnnl.hpp>

#include <optional>
#include <vector>

/// How tensors lie in memory, in oneDNN's terms: a convolution likes its channels in blocks, the
/// network's bindings and our own kernels want them row-major ("plain").
namespace scribo::cpu {

using Layout = dnnl::memory::desc;

/// Row-major floats. A single number is a list of one, because oneDNN has no rank of 0.
Layout plainLayout(const Shape& shape);

/// Floats in whichever order oneDNN prefers.
Layout anyLayout(const Shape& shape);

/// Floats with the given distances between neighbours along each axis.
Layout stridedLayout(const Shape& shape, const Shape& strides);

/// N x channels x rows x columns, the channels in blocks of `block` (8 or 16) that lie together.
Layout blockedLayout(const Shape& shape, int block);

/// The block of such a layout; 0 for any other.
int channelBlock(const Layout& layout);

/// Whether the elements lie one behind the other in row-major order.
bool isPlain(const Layout& layout);

/// The same memory with axis permutation[i] of `layout` as axis i.
Layout transposed(const Layout& layout, const std::vector<int>& permutation);

/// The same memory seen as `shape`; nothing when the elements do not lie in an order that allows it.
std::optional<Layout> reshaped(const Layout& layout, const Shape& shape);

} // namespace scribo::cpu
