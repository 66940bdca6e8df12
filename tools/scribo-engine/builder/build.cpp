#include "build.h"

#include "adapt.h"
#include "importer.h"
#include "onnxmodel.h"
#include "operations/importtable.h"
#include "passes/passes.h"

#include <algorithm>
#include <cmath>

namespace scribo::builder {

namespace {

bool checkWidths(const WidthRange& widths, Problems* problems)
{
    if (widths.minimum >= 1 && widths.minimum <= widths.maximum && widths.maximum <= largestWidth) {
        return true;
    }
    problems->push_back("widths from " + std::to_string(widths.minimum) + " to " + std::to_string(widths.maximum)
        + " make no sense; the smallest must be at least 1, the largest not below it and at most "
        + std::to_string(largestWidth));
    return false;
}

/// Folds until nothing changes: a folded shape is a constant, from which more can be worked out.
bool foldAll(NetworkT& network, const WidthRange& widths, std::string* error)
{
    bool changed = true;
    while (changed) {
        removeDead(network);
        Profile profile;
        if (!profileNetwork(network, widths, &profile, error)) {
            return false;
        }
        changed = composeLayerNormalisation(network, profile);
        changed |= simplifyScalars(network, profile);
        changed |= foldShapes(network, profile);
        changed |= foldConstants(network);
        changed |= hoistTransposes(network);
        changed |= removeIdentities(network);
    }
    return true;
}

void fuseAll(NetworkT& network)
{
    dropZeroStates(network);
    foldAffine(network);
    fuseBias(network);
    // What has been composed may be a part of something larger; what it was made of must not be
    // counted as a reader.
    bool changed = true;
    while (changed) {
        changed = scaleActivations(network);
        changed |= composeActivations(network);
        removeDead(network);
    }
    fuseActivations(network);
    removeDead(network);
}

/// Checks that every weight is a number: one that is not, from a training that went wrong, would spoil some readings
/// and leave others. Infinite ones are in use, as masks.
bool checkWeights(const NetworkT& network, Problems* problems)
{
    for (const auto& tensor : network.tensors) {
        if (!isConstant(*tensor) || tensor->type != format::ElementType::Float32) {
            continue;
        }
        const std::vector<float> values = floatValues(*tensor);
        if (std::any_of(values.begin(), values.end(), [](float value) { return std::isnan(value); })) {
            problems->push_back("constant '" + tensor->name + "' holds a value that is not a number");
        }
    }
    return problems->empty();
}

/// Writes the extents of the outputs, and checks that each hangs on the picture.
bool finishOutputs(NetworkT& network, const WidthRange& widths, Problems* problems)
{
    Profile profile;
    std::string error;
    if (!profileNetwork(network, widths, &profile, &error)) {
        problems->push_back(error);
        return false;
    }
    for (int output : network.outputs) {
        TensorT& tensor = *network.tensors[static_cast<std::size_t>(output)];
        if (isConstant(tensor)) {
            problems->push_back("output '" + tensor.name + "' is not computed from the picture");
        }
        tensor.dims = profile[static_cast<std::size_t>(output)].extents;
    }
    return problems->empty();
}

} // namespace

std::unique_ptr<format::NetworkT> buildNetwork(
    const void* bytes, std::size_t size, const BuildOptions& options, Problems* problems)
{
    onnx::ModelProto model;
    std::string error;
    if (!checkWidths(options.widths, problems)) {
        return nullptr;
    }
    if (!parseModel(bytes, size, &model, &error)) {
        problems->push_back(error);
        return nullptr;
    }
    const int opset = operationSet(model, &error);
    if (opset == 0) {
        problems->push_back(error);
        return nullptr;
    }
    std::unique_ptr<NetworkT> network
        = Importer(model.graph(), opset, importTable(), options.widths, options.picture.height, problems).run();
    if (!network || !adaptPicture(*network, options.picture, problems)
        || !adaptScores(*network, options.scores, options.widths, problems)) {
        return nullptr;
    }
    if (!foldAll(*network, options.widths, &error)) {
        problems->push_back(error);
        return nullptr;
    }
    fuseAll(*network);
    if (!checkWeights(*network, problems) || !finishOutputs(*network, options.widths, problems)) {
        return nullptr;
    }
    network->minimum_width = options.widths.minimum;
    network->maximum_width = options.widths.maximum;
    network->builder = "scribo-engine " SCRIBO_VERSION;
    network->source = options.source;
    return network;
}

} // namespace scribo::builder
