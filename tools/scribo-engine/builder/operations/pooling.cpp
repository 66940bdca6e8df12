#include "operations.h"
#include "window.h"

#include <algorithm>

namespace scribo::builder {

namespace {

void importPool(Importer& importer, const OnnxNode& node, format::PoolingKind kind)
{
    const std::optional<Window> window = readWindow(node, node.integers("kernel_shape", {}));
    if (!window) {
        return;
    }
    if (std::any_of(window->dilations.begin(), window->dilations.end(), [](int dilation) { return dilation != 1; })) {
        node.refuse("dilations are not supported");
        return;
    }
    format::PoolingT pooling;
    pooling.kind = kind;
    pooling.kernel = window->kernel;
    pooling.strides = window->strides;
    pooling.pads = window->pads;
    pooling.ceil_mode = node.integer("ceil_mode", 0) != 0;
    const int data = liftInput(importer, node, *window, importer.tensor(node, 0));
    importer.bind(node, 0, lowerOutput(importer, node, *window, importer.emit(node, pooling, {data})));
}

void importMaxPool(Importer& importer, const OnnxNode& node)
{
    // The order in which the positions of the maxima are counted; the engine does not give them.
    node.ignore("storage_order");
    importPool(importer, node, format::PoolingKind::Max);
}

void importAveragePool(Importer& importer, const OnnxNode& node)
{
    const bool includePad = node.integer("count_include_pad", 0) != 0;
    importPool(
        importer, node, includePad ? format::PoolingKind::AverageIncludePad : format::PoolingKind::AverageExcludePad);
}

} // namespace

void addPooling(ImportTable* table)
{
    (*table)["MaxPool"] = {importMaxPool, 1, 1};
    (*table)["AveragePool"] = {importAveragePool, 1, 1};
}

} // namespace scribo::builder
