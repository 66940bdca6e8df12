#include "operations.h"

#include <limits>

namespace scribo::builder {

namespace {

using format::ActivationKind;

void emitActivation(Importer& importer, const OnnxNode& node, ActivationKind kind, float alpha = 0, float beta = 0)
{
    format::ActivationT activation;
    activation.kind = kind;
    activation.alpha = alpha;
    activation.beta = beta;
    importer.bind(node, 0, importer.emit(node, activation, {importer.tensor(node, 0)}));
}

template <ActivationKind kind>
void importPlain(Importer& importer, const OnnxNode& node)
{
    emitActivation(importer, node, kind);
}

void importLeakyRelu(Importer& importer, const OnnxNode& node)
{
    emitActivation(importer, node, ActivationKind::LeakyRelu, node.real("alpha", 0.01f));
}

void importElu(Importer& importer, const OnnxNode& node)
{
    emitActivation(importer, node, ActivationKind::Elu, node.real("alpha", 1));
}

void importHardSigmoid(Importer& importer, const OnnxNode& node)
{
    emitActivation(importer, node, ActivationKind::HardSigmoid, node.real("alpha", 0.2f), node.real("beta", 0.5f));
}

/// max(x, 0) + slope * min(x, 0), for slopes that differ between channels.
void importSlopes(Importer& importer, const OnnxNode& node)
{
    const auto combine = [&](format::BinaryKind kind, int left, int right) {
        format::BinaryT binary;
        binary.kind = kind;
        return importer.emit(node, binary, {left, right});
    };
    const int data = importer.tensor(node, 0);
    const int zero = importer.constant({}, std::vector<float>{0});
    const int above = combine(format::BinaryKind::Maximum, data, zero);
    const int below = combine(format::BinaryKind::Minimum, data, zero);
    const int sloped = combine(format::BinaryKind::Multiply, below, importer.tensor(node, 1));
    importer.bind(node, 0, combine(format::BinaryKind::Add, above, sloped));
}

/// A slope for negative values that is the same everywhere is a leaky rectifier.
void importPRelu(Importer& importer, const OnnxNode& node)
{
    const TensorT* slope = importer.floats(node, 1, "slope");
    if (!slope) {
        return;
    }
    const std::vector<float> values = floatValues(*slope);
    if (values.size() == 1) {
        emitActivation(importer, node, ActivationKind::LeakyRelu, values.front());
    } else {
        importSlopes(importer, node);
    }
}

void importGelu(Importer& importer, const OnnxNode& node)
{
    const std::string approximation = node.text("approximate", "none");
    if (approximation != "none") {
        node.refuse("approximation '" + approximation + "' is not supported");
        return;
    }
    emitActivation(importer, node, ActivationKind::Gelu);
}

/// A limit of Clip, or `fallback` where it is left out; nothing when the node is refused. Before opset
/// 11 the limits were attributes.
std::optional<float> limit(
    const Importer& importer, const OnnxNode& node, const char* attribute, int position, float fallback)
{
    if (importer.opset() < 11) {
        return node.real(attribute, fallback);
    }
    if (importer.tensor(node, position) < 0) {
        return fallback;
    }
    const TensorT* given = importer.floats(node, position, "limits");
    if (!given) {
        return std::nullopt;
    }
    return floatValues(*given).front();
}

void importClip(Importer& importer, const OnnxNode& node)
{
    const std::optional<float> lower = limit(importer, node, "min", 1, std::numeric_limits<float>::lowest());
    const std::optional<float> upper = limit(importer, node, "max", 2, std::numeric_limits<float>::max());
    if (lower && upper) {
        emitActivation(importer, node, ActivationKind::Clip, *lower, *upper);
    }
}

} // namespace

void addActivations(ImportTable* table)
{
    (*table)["Relu"] = {importPlain<ActivationKind::Relu>, 1, 1};
    (*table)["Sigmoid"] = {importPlain<ActivationKind::Sigmoid>, 1, 1};
    (*table)["Tanh"] = {importPlain<ActivationKind::Tanh>, 1, 1};
    (*table)["HardSwish"] = {importPlain<ActivationKind::HardSwish>, 1, 1};
    (*table)["Softplus"] = {importPlain<ActivationKind::Softplus>, 1, 1};
    (*table)["LeakyRelu"] = {importLeakyRelu, 1, 1};
    (*table)["Elu"] = {importElu, 1, 1};
    (*table)["HardSigmoid"] = {importHardSigmoid, 1, 1};
    (*table)["PRelu"] = {importPRelu, 2, 2};
    (*table)["Gelu"] = {importGelu, 1, 1};
    (*table)["Clip"] = {importClip, 1, 3};
}

} // namespace scribo::builder
