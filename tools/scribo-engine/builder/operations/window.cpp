#include "window.h"

#include <algorithm>

namespace scribo::builder {

namespace {

/// Larger windows, steps and pads than any picture are damage, and would overflow.
constexpr std::int64_t largestExtent = 1 << 14;

bool fill(const OnnxNode& node, const char* attribute, std::size_t count, std::int64_t fallback, std::int64_t smallest,
    std::vector<int>* list)
{
    const std::vector<std::int64_t> values = node.integers(attribute, std::vector<std::int64_t>(count, fallback));
    const auto possible = [smallest](std::int64_t value) { return value >= smallest && value <= largestExtent; };
    if (values.size() != count || !std::all_of(values.begin(), values.end(), possible)) {
        node.refuse(std::string("attribute '") + attribute + "' makes no sense");
        return false;
    }
    list->assign(values.begin(), values.end());
    return true;
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
    Window window;
    window.kernel.assign(kernel.begin(), kernel.end());
    if (!fill(node, "strides", axes, 1, 1, &window.strides) || !fill(node, "dilations", axes, 1, 1, &window.dilations)
        || !fill(node, "pads", 2 * axes, 0, 0, &window.pads) || !applyAutoPad(node, &window)) {
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
