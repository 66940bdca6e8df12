#include "operations.h"

#include <cmath>

namespace scribo::builder {

namespace {

/// With the statistics fixed after training, a batch normalisation scales and shifts each channel.
void importBatchNormalization(Importer& importer, const OnnxNode& node)
{
    // Has a bearing on training only.
    node.ignore("momentum");
    // Before opset 9: whether the statistics are those of a channel or, 0, of every place in it.
    if (node.integer("spatial", 1) != 1) {
        node.refuse("attribute 'spatial' is not supported");
        return;
    }
    if (node.integer("training_mode", 0) != 0) {
        node.refuse("it was exported in training mode; call eval() before the export");
        return;
    }
    const char* names[] = {"scale", "shift", "mean", "variance"};
    std::vector<std::vector<float>> values;
    for (int i = 0; i < 4; ++i) {
        const TensorT* constant = importer.floats(node, i + 1, names[i]);
        if (!constant) {
            return;
        }
        values.push_back(floatValues(*constant));
        if (values.back().size() != values.front().size()) {
            node.refuse("its constants are of different lengths");
            return;
        }
    }
    const double epsilon = static_cast<double>(node.real("epsilon", 1e-5f));
    std::vector<float> scale, shift;
    for (std::size_t channel = 0; channel < values[0].size(); ++channel) {
        const double factor = values[0][channel] / std::sqrt(static_cast<double>(values[3][channel]) + epsilon);
        scale.push_back(static_cast<float>(factor));
        shift.push_back(static_cast<float>(values[1][channel] - values[2][channel] * factor));
    }
    const Extents dims = {static_cast<std::int64_t>(scale.size())};
    const int scaleIndex = importer.constant(dims, scale);
    const int shiftIndex = importer.constant(dims, shift);
    importer.bind(
        node, 0, importer.emit(node, format::ChannelAffineT(), {importer.tensor(node, 0), scaleIndex, shiftIndex}));
}

void importLayerNormalization(Importer& importer, const OnnxNode& node)
{
    // The precision in which the statistics may be computed; here it is always 32 bits.
    node.ignore("stash_type");
    format::LayerNormalisationT layer;
    layer.axis = node.axis("axis", -1);
    layer.epsilon = node.real("epsilon", 1e-5f);
    std::vector<int> inputs = {importer.tensor(node, 0), importer.tensor(node, 1)};
    if (importer.tensor(node, 2) >= 0) {
        inputs.push_back(importer.tensor(node, 2));
    }
    importer.bind(node, 0, importer.emit(node, layer, inputs));
}

/// Before opset 13 the soft-max ran over all axes from `axis` on, taken together.
void importFlatSoftmax(Importer& importer, const OnnxNode& node, bool logarithm)
{
    format::SoftmaxT softmax;
    softmax.logarithm = logarithm;
    const std::int64_t axis = node.axis("axis", 1);
    const int data = importer.tensor(node, 0);
    const std::optional<Extents> extents = importer.extents(node, data);
    if (!extents) {
        return;
    }
    const auto rank = static_cast<std::int64_t>(extents->size());
    const std::int64_t normal = axis < 0 ? axis + rank : axis;
    if (normal < 0 || normal >= rank) {
        node.refuse("axis " + std::to_string(axis) + " does not exist");
        return;
    }
    if (normal == rank - 1) {
        importer.bind(node, 0, importer.emit(node, softmax, {data}));
        return;
    }
    std::vector<std::int64_t> flat(static_cast<std::size_t>(normal), 0);
    flat.push_back(-1);
    const int flatShape = importer.constant({static_cast<std::int64_t>(flat.size())}, flat);
    const int shape = importer.emit(node, format::ShapeOfT(), {data});
    const int flattened = importer.emit(node, format::ReshapeT(), {data, flatShape});
    const int result = importer.emit(node, softmax, {flattened});
    importer.bind(node, 0, importer.emit(node, format::ReshapeT(), {result, shape}));
}

template <bool logarithm>
void importSoftmax(Importer& importer, const OnnxNode& node)
{
    if (importer.opset() < 13) {
        importFlatSoftmax(importer, node, logarithm);
        return;
    }
    format::SoftmaxT softmax;
    softmax.logarithm = logarithm;
    softmax.axis = node.axis("axis", -1);
    importer.bind(node, 0, importer.emit(node, softmax, {importer.tensor(node, 0)}));
}

} // namespace

void addNormalisation(ImportTable* table)
{
    (*table)["BatchNormalization"] = {importBatchNormalization, 5, 5};
    (*table)["LayerNormalization"] = {importLayerNormalization, 2, 3};
    (*table)["Softmax"] = {importSoftmax<false>, 1, 1};
    (*table)["LogSoftmax"] = {importSoftmax<true>, 1, 1};
}

} // namespace scribo::builder
