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

Result<void> checkWidths(const WidthRange& widths)
{
    if (widths.minimum >= 1 && widths.minimum <= widths.maximum && widths.maximum <= largestWidth) {
        return {};
    }
    return failure("widths from " + std::to_string(widths.minimum) + " to " + std::to_string(widths.maximum)
        + " make no sense; the smallest must be at least 1, the largest not below it and at most "
        + std::to_string(largestWidth));
}

/// The network as it was trained.
Checked<std::unique_ptr<NetworkT>> importModel(const void* bytes, std::size_t size, const BuildOptions& options)
{
    const Result<onnx::ModelProto> model = parseModel(bytes, size);
    if (!model) {
        return faulty(model.error());
    }
    const Result<int> opset = operationSet(*model);
    if (!opset) {
        return faulty(opset.error());
    }
    return Importer(model->graph(), *opset, importTable(), options.widths, options.picture.height).run();
}

/// Folds until nothing changes: a folded shape is a constant, from which more can be worked out.
Result<void> foldAll(NetworkT& network, const WidthRange& widths)
{
    bool changed = true;
    while (changed) {
        removeDead(network);
        const Result<Profile> profile = profileNetwork(network, widths);
        if (!profile) {
            return failure(profile.error().message);
        }
        changed = composeLayerNormalisation(network, *profile);
        changed |= simplifyScalars(network, *profile);
        changed |= foldShapes(network, *profile);
        changed |= foldConstants(network);
        changed |= hoistTransposes(network);
        changed |= removeIdentities(network);
    }
    return {};
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

/// A fault for every constant with a weight that is not a number. After a training that went wrong, such a weight
/// spoils some readings and leaves others. Infinite weights are in use, as masks.
Faults faultsOfWeights(const NetworkT& network)
{
    Faults faults;
    for (const auto& tensor : network.tensors) {
        if (!isConstant(*tensor) || tensor->type != format::ElementType::Float32) {
            continue;
        }
        const std::vector<float> values = floatValues(*tensor);
        if (std::any_of(values.begin(), values.end(), [](float value) { return std::isnan(value); })) {
            faults.push_back("constant '" + tensor->name + "' holds a value that is not a number");
        }
    }
    return faults;
}

/// Writes the extents of the outputs. A fault for each output that does not depend on the picture.
Faults finishOutputs(NetworkT& network, const WidthRange& widths)
{
    const Result<Profile> profile = profileNetwork(network, widths);
    if (!profile) {
        return {profile.error().message};
    }
    Faults faults;
    for (int output : network.outputs) {
        TensorT& tensor = *network.tensors[static_cast<std::size_t>(output)];
        if (isConstant(tensor)) {
            faults.push_back("output '" + tensor.name + "' is not computed from the picture");
        }
        tensor.dims = (*profile)[static_cast<std::size_t>(output)].extents;
    }
    return faults;
}

} // namespace

Checked<std::unique_ptr<format::NetworkT>> buildNetwork(
    const void* bytes, std::size_t size, const BuildOptions& options)
{
    if (const Result<void> possible = checkWidths(options.widths); !possible) {
        return faulty(possible.error());
    }
    auto imported = importModel(bytes, size, options);
    if (!imported) {
        return imported;
    }
    NetworkT& network = **imported;
    if (const Result<void> adapted = adaptPicture(network, options.picture); !adapted) {
        return faulty(adapted.error());
    }
    if (Checked<void> adapted = adaptScores(network, options.scores, options.widths); !adapted) {
        return faulty(std::move(adapted.error()));
    }
    if (const Result<void> folded = foldAll(network, options.widths); !folded) {
        return faulty(folded.error());
    }
    fuseAll(network);
    if (Faults faults = faultsOfWeights(network); !faults.empty()) {
        return faulty(std::move(faults));
    }
    if (Faults faults = finishOutputs(network, options.widths); !faults.empty()) {
        return faulty(std::move(faults));
    }
    network.minimum_width = options.widths.minimum;
    network.maximum_width = options.widths.maximum;
    network.builder = "scribo-engine " SCRIBO_VERSION;
    network.source = options.source;
    return imported;
}

} // namespace scribo::builder
