#pragma once

#include "importer.h"

#include <cstddef>

namespace scribo::builder {

/// How a convolution or pooling moves over its input: rows first, then columns, as the engine has
/// it. A window over one axis is one of height 1.
struct Window
{
    std::vector<int> kernel;
    std::vector<int> strides;
    std::vector<int> dilations;
    std::vector<int> pads; ///< top, left, bottom, right
    bool overOneAxis = false;
};

/// Reads the window attributes of `node` for a kernel of these extents (one or two). Nothing, with
/// the node refused, where they make no sense or depend on the width.
std::optional<Window> readWindow(const OnnxNode& node, const std::vector<std::int64_t>& kernel);

/// Around an operation with a window over one axis: its input with an axis for rows, its output
/// without. Other windows leave the tensor as it is.
int liftInput(Importer& importer, const OnnxNode& node, const Window& window, int data);
int lowerOutput(Importer& importer, const OnnxNode& node, const Window& window, int data);

} // namespace scribo::builder
