#include "operations.h"
#include "window.h"

namespace scribo::builder {

namespace {

void importConv(Importer& importer, const OnnxNode& node)
{
    const TensorT* weights = importer.floats(node, 1, "weights");
    if (!weights) {
        return;
    }
    if (weights->dims.size() < 3) {
        node.refuse("its weights have " + std::to_string(weights->dims.size()) + " dimensions");
        return;
    }
    const Extents kernel(weights->dims.begin() + 2, weights->dims.end());
    if (node.integers("kernel_shape", kernel) != kernel) {
        node.refuse("attribute 'kernel_shape' contradicts its weights");
        return;
    }
    const std::optional<Window> window = readWindow(node, kernel);
    const std::int64_t groups = node.integer("group", 1);
    if (!window) {
        return;
    }
    if (groups < 1 || weights->dims[0] % groups != 0) {
        node.refuse("attribute 'group' does not divide its " + std::to_string(weights->dims[0]) + " filters");
        return;
    }
    int weightIndex = importer.tensor(node, 1);
    if (window->overOneAxis) {
        weightIndex
            = importer.constant({weights->dims[0], weights->dims[1], 1, weights->dims[2]}, floatValues(*weights));
    }
    std::vector<int> inputs = {liftInput(importer, node, *window, importer.tensor(node, 0)), weightIndex};
    if (importer.tensor(node, 2) >= 0) {
        if (!importer.floats(node, 2, "bias")) {
            return;
        }
        inputs.push_back(importer.tensor(node, 2));
    }
    format::ConvolutionT convolution;
    convolution.strides = window->strides;
    convolution.dilations = window->dilations;
    convolution.pads = window->pads;
    convolution.groups = static_cast<int>(groups);
    const int result = importer.emit(node, convolution, inputs);
    importer.bind(node, 0, lowerOutput(importer, node, *window, result));
}

} // namespace

void addConvolutions(ImportTable* table)
{
    (*table)["Conv"] = {importConv, 2, 3};
}

} // namespace scribo::builder
