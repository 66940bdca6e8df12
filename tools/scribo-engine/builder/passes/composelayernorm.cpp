#include "passes.h"
#include "scalaraffine.h"

#include <cmath>

namespace scribo::builder {

namespace {

using format::BinaryKind;
using format::OperationKind;

/// A normalisation over the last axis that is written out:
/// centred = x - mean(x); y = centred / sqrt(mean(centred^2) + epsilon) * scale + shift.
struct WrittenOut
{
    int data;
    float epsilon;
};

const OperationT* binaryAt(const Uses& uses, int tensor, BinaryKind kind)
{
    const OperationT* operation = uses.producer(tensor);
    return operation && operation->kind.type == OperationKind::Binary && operation->kind.AsBinary()->kind == kind
        ? operation
        : nullptr;
}

/// The tensor whose mean over the last axis `tensor` is, with the axis kept; -1 when it is something else.
int meanOf(const Uses& uses, int tensor, const Profile& profile)
{
    const OperationT* operation = uses.producer(tensor);
    if (!operation || operation->kind.type != OperationKind::Reduction) {
        return -1;
    }
    const format::ReductionT& reduction = *operation->kind.AsReduction();
    const int data = operation->inputs.front();
    const int last = static_cast<int>(profile[static_cast<std::size_t>(data)].extents.size()) - 1;
    const bool fits = reduction.kind == format::ReductionKind::Mean && reduction.keep_dims && reduction.axes.size() == 1
        && (reduction.axes.front() == -1 || reduction.axes.front() == last);
    return fits ? data : -1;
}

bool isSquareOf(const NetworkT& network, const Uses& uses, int tensor, int data)
{
    if (const OperationT* product = binaryAt(uses, tensor, BinaryKind::Multiply)) {
        return product->inputs[0] == data && product->inputs[1] == data;
    }
    const OperationT* power = binaryAt(uses, tensor, BinaryKind::Power);
    const TensorT* exponent = power ? constantAt(network, power->inputs[1]) : nullptr;
    return exponent && power->inputs[0] == data && floatValues(*exponent) == std::vector<float>{2};
}

std::optional<WrittenOut> writtenOut(
    const NetworkT& network, const Uses& uses, const Profile& profile, const OperationT& quotient)
{
    const int centred = quotient.inputs[0];
    const OperationT* difference = binaryAt(uses, centred, BinaryKind::Subtract);
    if (!difference || meanOf(uses, difference->inputs[1], profile) != difference->inputs[0]) {
        return std::nullopt;
    }
    const OperationT* root = uses.producer(quotient.inputs[1]);
    if (!root || root->kind.type != OperationKind::Unary || root->kind.AsUnary()->kind != format::UnaryKind::Sqrt) {
        return std::nullopt;
    }
    const OperationT* sum = uses.producer(root->inputs.front());
    std::size_t position = 0;
    const auto affine = sum ? scalarAffine(network, *sum, &position) : std::nullopt;
    if (!affine || affine->scale != 1 || !(affine->shift > 0)) {
        return std::nullopt;
    }
    const int squares = meanOf(uses, sum->inputs[position], profile);
    if (squares < 0 || !isSquareOf(network, uses, squares, centred)) {
        return std::nullopt;
    }
    return WrittenOut{difference->inputs[0], static_cast<float>(affine->shift)};
}

/// The constant row that `operation` combines with `data`; null when it does something else.
const TensorT* rowBeside(const NetworkT& network, const OperationT* operation, int data, std::int64_t length)
{
    if (!operation) {
        return nullptr;
    }
    const int other = operation->inputs[operation->inputs[0] == data ? 1 : 0];
    const TensorT* constant = constantAt(network, other);
    return constant && constant->dims == Extents{length} ? constant : nullptr;
}

/// The only operation that reads `tensor`, when it is of this kind.
OperationT* soleReader(NetworkT& network, const Uses& uses, int tensor, BinaryKind kind)
{
    for (const auto& operation : network.operations) {
        for (int input : operation->inputs) {
            if (input == tensor) {
                const bool right = operation->kind.type == OperationKind::Binary
                    && operation->kind.AsBinary()->kind == kind && uses.readers(tensor) == 1;
                return right ? operation.get() : nullptr;
            }
        }
    }
    return nullptr;
}

} // namespace

bool composeLayerNormalisation(NetworkT& network, const Profile& profile)
{
    bool changed = false;
    for (const auto& operation : network.operations) {
        if (operation->kind.type != OperationKind::Binary || operation->kind.AsBinary()->kind != BinaryKind::Divide) {
            continue;
        }
        const Uses uses(network);
        const auto found = writtenOut(network, uses, profile, *operation);
        if (!found) {
            continue;
        }
        const std::int64_t length = profile[static_cast<std::size_t>(found->data)].extents.back();
        const int quotient = operation->outputs.front();
        OperationT* product = soleReader(network, uses, quotient, BinaryKind::Multiply);
        const TensorT* scale = rowBeside(network, product, quotient, length);
        if (!scale) {
            continue;
        }
        const int scaled = product->outputs.front();
        OperationT* sum = soleReader(network, uses, scaled, BinaryKind::Add);
        const TensorT* shift = rowBeside(network, sum, scaled, length);
        OperationT& last = shift ? *sum : *product;
        std::vector<int> inputs
            = {found->data, addTensor(network, makeConstant(scale->name, scale->dims, floatValues(*scale)))};
        if (shift) {
            inputs.push_back(addTensor(network, makeConstant(shift->name, shift->dims, floatValues(*shift))));
        }
        format::LayerNormalisationT layer;
        layer.epsilon = found->epsilon;
        last.kind.Set(std::move(layer));
        last.inputs = std::move(inputs);
        changed = true;
    }
    return changed;
}

} // namespace scribo::builder
