#include "operations.h"
#include "tensordata.h"

#include <algorithm>
#include <cmath>

namespace scribo::builder {

namespace {

using format::ElementType;

/// Whether the runtime can resize as the node asks; refuses the node when it cannot. half_pixel and pytorch_half_pixel
/// differ only where several pixels become one, and the runtime refuses that.
bool isLinear(const Importer& importer, const OnnxNode& node)
{
    // Attributes of other modes.
    for (const char* attribute : {"cubic_coeff_a", "exclude_outside", "extrapolation_value", "nearest_mode"}) {
        node.ignore(attribute);
    }
    const std::string mode = node.text("mode", "nearest");
    const std::string coordinates = node.text("coordinate_transformation_mode", "half_pixel");
    const std::string policy = node.text("keep_aspect_ratio_policy", "stretch");
    const bool smooth = node.integer("antialias", 0) != 0;
    if (importer.opset() < 11) {
        node.refuse("it is supported from opset 11 on");
    } else if (mode != "linear") {
        node.refuse("mode '" + mode + "' is not supported");
    } else if (coordinates != "half_pixel" && coordinates != "pytorch_half_pixel") {
        node.refuse("coordinates by '" + coordinates + "' are not supported");
    } else if (policy != "stretch" || smooth) {
        node.refuse("keeping the aspect ratio and smoothing are not supported");
    } else {
        return true;
    }
    return false;
}

/// The extents of the result, from the scales in input 2; -1, with the node refused, when there are none.
int scaledExtents(Importer& importer, const OnnxNode& node)
{
    if (importer.tensor(node, 2) < 0) {
        node.refuse("its scales and sizes are missing");
        return -1;
    }
    const TensorT* scales = importer.floats(node, 2, "scales");
    if (!scales) {
        return -1;
    }
    constexpr float largestScale = 1024;
    std::vector<std::int64_t> factors;
    for (const float scale : floatValues(*scales)) {
        if (!(scale >= 1 && scale <= largestScale) || scale != std::floor(scale)) {
            node.refuse("scales other than whole numbers are not supported");
            return -1;
        }
        factors.push_back(static_cast<std::int64_t>(scale));
    }
    format::BinaryT product;
    product.kind = format::BinaryKind::Multiply;
    const int extents = importer.emit(node, format::ShapeOfT(), {importer.tensor(node, 0)});
    return importer.emit(
        node, product, {extents, importer.constant({static_cast<std::int64_t>(factors.size())}, factors)});
}

void importResize(Importer& importer, const OnnxNode& node)
{
    if (!isLinear(importer, node)) {
        return;
    }
    const int sizes = importer.tensor(node, 3) >= 0 ? importer.tensor(node, 3) : scaledExtents(importer, node);
    if (sizes < 0) {
        return;
    }
    if (importer.tensor(sizes).type != ElementType::Int64) {
        node.refuse("its sizes must be integers");
        return;
    }
    importer.bind(node, 0, importer.emit(node, format::ResizeT(), {importer.tensor(node, 0), sizes}));
}

void importGridSample(Importer& importer, const OnnxNode& node)
{
    // Opset 20 renamed the modes.
    const std::string mode = node.text("mode", importer.opset() < 20 ? "bilinear" : "linear");
    const std::string padding = node.text("padding_mode", "zeros");
    if (mode != "bilinear" && mode != "linear") {
        node.refuse("mode '" + mode + "' is not supported");
        return;
    }
    if (padding != "zeros" && padding != "border") {
        node.refuse("padding by '" + padding + "' is not supported");
        return;
    }
    format::GridSampleT sample;
    sample.border = padding == "border";
    sample.align_corners = node.integer("align_corners", 0) != 0;
    importer.bind(node, 0, importer.emit(node, sample, {importer.tensor(node, 0), importer.tensor(node, 1)}));
}

} // namespace

void addResizing(ImportTable* table)
{
    (*table)["Resize"] = {importResize, 1, 4};
    (*table)["GridSample"] = {importGridSample, 2, 2};
}

} // namespace scribo::builder
