#include "window.h"

#include <algorithm>

namespace scribo::builder {

namespace {

/// Windows, steps and pads that are larger than any picture come from a damaged file, and would overflow.
constexpr std::int64_t largestExtent = 1 << 14;

/// The `count` integers of an attribute; nothing, with the node refused, when they make no sense.
std::optional<std::vector<int>> readList(
    const OnnxNode& node, const char* attribute, std::size_t count, std::int64_t fallback, std::int64_t smallest)
{
    const std::vector<std::int64_t> values = node.integers(attribute, std::vector<std::int64_t>(count, fallback));
    const auto possible = [smallest](std::int64_t value) { return value >= smallest && value <= largestExtent; };
    if (values.size() != count || !std::all_of(values.begin(), values.end(), possible)) {
        node.refuse(std::string("attribute '") + attribute + "' makes no sense");
        return std::nullopt;
    }
    return std::vector<int>(values.begin(), values.end());
}

/// Replaces the pads where the node asks for those that keep the extents ("same"), which are known
/// without the width only for steps of one.
bool applyAutoPad(const OnnxNode& node, Window* window)
{
    const std::string mode = node.text("auto_pad", "NOTSET");
    if (mode == "NOTSET") {
        return true;
    }
    const std::size_t axes = window->kernel.size();
    std::fill(window->pads.begin(), window->pads.end(), 0);
    if (mode == "VALID") {
        return true;
    }
    const bool unitSteps
        = std::all_of(window->strides.begin(), window->strides.end(), [](int stride) { return stride == 1; });
    if ((mode != "SAME_UPPER" && mode != "SAME_LOWER") || !unitSteps) {
        node.refuse("auto_pad '" + mode + "' is not supported with these strides; export explicit pads");
        return false;
    }
    for (std::size_t axis = 0; axis < axes; ++axis) {
        const int total = (window->kernel[axis] - 1) * window->dilations[axis];
        const int larger = total - total / 2;
        window->pads[axis] = mode == "SAME_UPPER" ? total / 2 : larger;
        window->pads[axes + axis] = total - window->pads[axis];
    }
    return true;
}

void addRowAxis(Window* window)
{
    window->overOneAxis = true;
    window->kernel.insert(window->kernel.begin(), 1);
    window->strides.insert(window->strides.begin(), 1);
    window->dilations.insert(window->dilations.begin(), 1);
    window->pads = {0, window->pads[0], 0, window->pads[1]};
}

} // namespace

std::optional<Window> readWindow(const OnnxNode& node, const std::vector<std::int64_t>& kernel)
{
    const std::size_t axes = kernel.size();
    if (axes != 1 && axes != 2) {
        node.refuse("a window over " + std::to_string(axes) + " axes is not supported");
        return std::nullopt;
    }
    for (std::int64_t extent : kernel) {
        if (extent < 1 || extent > largestExtent) {
            node.refuse("its kernel makes no sense");
            return std::nullopt;
        }
    }
    auto strides = readList(node, "strides", axes, 1, 1);
    auto dilations = strides ? readList(node, "dilations", axes, 1, 1) : std::nullopt;
    auto pads = dilations ? readList(node, "pads", 2 * axes, 0, 0) : std::nullopt;
    if (!pads) {
        return std::nullopt;
    }
    Window window = {{kernel.begin(), kernel.end()}, std::move(*strides), std::move(*dilations), std::move(*pads)};
    if (!applyAutoPad(node, &window)) {
        return std::nullopt;
    }
    if (axes == 1) {
        addRowAxis(&window);
    }
    return window;
}

int liftInput(Importer& importer, const OnnxNode& node, const Window& window, int data)
{
    format::UnsqueezeT lift;
    lift.axes = {2};
    return window.overOneAxis ? importer.emit(node, lift, {data}) : data;
}

int lowerOutput(Importer& importer, const OnnxNode& node, const Window& window, int data)
{
    format::SqueezeT lower;
    lower.axes = {2};
    return window.overOneAxis ? importer.emit(node, lower, {data}) : data;
}

} // namespace scribo::builder
