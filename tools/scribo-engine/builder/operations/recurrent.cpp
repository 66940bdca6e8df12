#include "operations.h"

namespace scribo::builder {

namespace {

using format::CellKind;

/// Input positions of ONNX's LSTM and GRU.
enum {
    Data = 0,
    Weights = 1,
    RecurrentWeights = 2,
    Bias = 3,
    Lengths = 4,
    InitialHidden = 5,
    InitialCell = 6,
    Peepholes = 7
};

std::optional<format::Direction> readDirection(const OnnxNode& node)
{
    const std::string direction = node.text("direction", "forward");
    if (direction == "forward") {
        return format::Direction::Forward;
    }
    if (direction == "reverse") {
        return format::Direction::Reverse;
    }
    if (direction == "bidirectional") {
        return format::Direction::Bidirectional;
    }
    node.refuse("direction '" + direction + "' is not known");
    return std::nullopt;
}

/// Whether the node asks for exactly the functions that a cell has by default.
bool defaultActivations(const OnnxNode& node, CellKind cell, int directions)
{
    const std::vector<std::string> one = cell == CellKind::Lstm ? std::vector<std::string>{"Sigmoid", "Tanh", "Tanh"}
                                                                : std::vector<std::string>{"Sigmoid", "Tanh"};
    std::vector<std::string> expected;
    for (int i = 0; i < directions; ++i) {
        expected.insert(expected.end(), one.begin(), one.end());
    }
    const std::vector<std::string> given = node.texts("activations");
    return (given.empty() || given == expected) && node.reals("activation_alpha").empty()
        && node.reals("activation_beta").empty();
}

/// Everything that the engine's recurrent layer does without.
bool plain(const Importer& importer, const OnnxNode& node, CellKind cell, int directions)
{
    if (!defaultActivations(node, cell, directions)) {
        node.refuse("other activations than the default ones are not supported");
        return false;
    }
    if (node.integer("layout", 0) != 0) {
        node.refuse("layout 1 is not supported");
        return false;
    }
    if (node.has("clip")) {
        node.refuse("attribute 'clip' is not supported");
        return false;
    }
    if (node.integer("input_forget", 0) != 0) {
        node.refuse("attribute 'input_forget' is not supported");
        return false;
    }
    if (importer.tensor(node, Lengths) >= 0) {
        node.refuse("sequence lengths are not supported");
        return false;
    }
    if (importer.tensor(node, Peepholes) >= 0) {
        node.refuse("peepholes are not supported");
        return false;
    }
    return true;
}

bool weightsFit(const Importer& importer, const OnnxNode& node, int directions, int gates, std::int64_t hidden)
{
    const TensorT* weights = importer.floats(node, Weights, "weights");
    const TensorT* recurrent = importer.floats(node, RecurrentWeights, "recurrent weights");
    if (!weights || !recurrent) {
        return false;
    }
    const std::int64_t rows = gates * hidden;
    const bool weightsRight = weights->dims.size() == 3 && weights->dims[0] == directions && weights->dims[1] == rows;
    const bool recurrentRight = recurrent->dims == Extents{directions, rows, hidden};
    const int bias = importer.tensor(node, Bias);
    if (bias >= 0 && !importer.floats(node, Bias, "bias")) {
        return false;
    }
    const bool biasRight = bias < 0 || importer.tensor(bias).dims == Extents{directions, 2 * rows};
    if (!weightsRight || !recurrentRight || !biasRight) {
        node.refuse("its weights do not fit a hidden size of " + std::to_string(hidden));
        return false;
    }
    return true;
}

void importRecurrent(Importer& importer, const OnnxNode& node, CellKind cell)
{
    const std::optional<format::Direction> direction = readDirection(node);
    if (!direction) {
        return;
    }
    const int directions = *direction == format::Direction::Bidirectional ? 2 : 1;
    const std::int64_t hidden = node.integer("hidden_size", 0);
    if (hidden < 1 || hidden > 1 << 14) {
        node.refuse("attribute 'hidden_size' is missing or makes no sense");
        return;
    }
    const int gates = cell == CellKind::Lstm ? 4 : 3;
    if (!plain(importer, node, cell, directions) || !weightsFit(importer, node, directions, gates, hidden)) {
        return;
    }
    format::RecurrentT layer;
    layer.cell = cell;
    layer.direction = *direction;
    layer.hidden_size = static_cast<int>(hidden);
    layer.linear_before_reset = cell == CellKind::Gru && node.integer("linear_before_reset", 0) != 0;
    std::vector<int> inputs;
    for (int position : {Data, Weights, RecurrentWeights, Bias, InitialHidden}) {
        inputs.push_back(importer.tensor(node, position));
    }
    int results = 2;
    if (cell == CellKind::Lstm) {
        inputs.push_back(importer.tensor(node, InitialCell));
        results = 3;
    }
    const std::vector<int> outputs = importer.emitAll(node, layer, inputs, results);
    for (int i = 0; i < results; ++i) {
        importer.bind(node, i, outputs[static_cast<std::size_t>(i)]);
    }
}

void importLstm(Importer& importer, const OnnxNode& node)
{
    importRecurrent(importer, node, CellKind::Lstm);
}

void importGru(Importer& importer, const OnnxNode& node)
{
    importRecurrent(importer, node, CellKind::Gru);
}

} // namespace

void addRecurrent(ImportTable* table)
{
    (*table)["LSTM"] = {importLstm, 3, 8};
    (*table)["GRU"] = {importGru, 3, 6};
}

} // namespace scribo::builder
