#include "networkcheck.h"

#include "attributes.h"
#include "operationrow.h"

#include "format/network.h"

#include <algorithm>
#include <vector>

namespace scribo::cpu {

namespace {

using format::ElementType;
using format::Operation;
using format::Tensor;

/// The number of elements in `dims`; -1 when an extent makes no sense or the product overflows.
std::int64_t elementCount(const flatbuffers::Vector<std::int64_t>* dims)
{
    std::int64_t count = 1;
    for (std::size_t i = 0; dims && i < dims->size(); ++i) {
        const std::int64_t extent = dims->Get(static_cast<flatbuffers::uoffset_t>(i));
        if (extent < 0 || extent > format::maximumExtent || __builtin_mul_overflow(count, extent, &count)) {
            return -1;
        }
    }
    return count;
}

/// One walk over a network; the first fault ends it.
class NetworkCheck
{
public:
    explicit NetworkCheck(const format::Network& network)
        : network(network)
    {
    }

    Result<void> run()
    {
        return checkTables()
            .and_then([this] { return checkTensors(); })
            .and_then([this] { return checkInput(); })
            .and_then([this] { return checkOperations(); })
            .and_then([this] { return checkOutputs(); });
    }

private:
    const format::Network& network;
    /// Per tensor: whether its value is there for an operation to read.
    std::vector<bool> defined;

    Result<void> checkTables() const
    {
        if (!network.tensors() || !network.operations() || !network.inputs() || !network.outputs()) {
            return failure("the network has no tensors, operations, inputs or outputs");
        }
        const auto absent = [](const auto* entry) { return !entry; };
        if (std::any_of(network.tensors()->begin(), network.tensors()->end(), absent)
            || std::any_of(network.operations()->begin(), network.operations()->end(), absent)) {
            return failure("the network has an empty entry");
        }
        if (network.operations()->size() > format::maximumOperations
            || network.tensors()->size() > format::maximumTensors) {
            return failure("the network has too many operations or tensors");
        }
        if (network.minimum_width() < 1 || network.minimum_width() > network.maximum_width()
            || network.maximum_width() > format::maximumWidth) {
            return failure("the network's range of widths, " + std::to_string(network.minimum_width()) + " to "
                + std::to_string(network.maximum_width()) + ", makes no sense");
        }
        return {};
    }

    const Tensor& tensorAt(int index) const
    {
        return *network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(index));
    }

    std::string title(int index) const
    {
        const Tensor& tensor = tensorAt(index);
        return "tensor " + std::to_string(index) + (tensor.name() ? " '" + tensor.name()->str() + "'" : "");
    }

    Result<void> checkTensors()
    {
        const int count = static_cast<int>(network.tensors()->size());
        for (int i = 0; i < count; ++i) {
            if (Result<void> checked = checkTensor(i); !checked) {
                return checked;
            }
            defined.push_back(format::isConstant(tensorAt(i)));
        }
        return {};
    }

    Result<void> checkTensor(int index) const
    {
        const Tensor& tensor = tensorAt(index);
        if (tensor.type() < ElementType::MIN || tensor.type() > ElementType::MAX) {
            return failure(title(index) + " has an unknown type");
        }
        if (!isAligned(tensor.dims())) {
            return failure(title(index) + " is not aligned");
        }
        if (tensor.dims() && tensor.dims()->size() > format::maximumRank) {
            return failure(title(index) + " has more than " + std::to_string(format::maximumRank) + " dimensions");
        }
        if (format::isConstant(tensor) && !hasItsData(tensor)) {
            return failure(title(index) + " has other data than its extents say");
        }
        return {};
    }

    static bool hasItsData(const Tensor& constant)
    {
        const std::int64_t count = elementCount(constant.dims());
        const auto size = static_cast<std::int64_t>(format::elementSize(constant.type()));
        const std::int64_t stored = constant.constant() ? constant.constant()->size() : 0;
        return count >= 0 && count <= format::maximumExtent && count * size == stored;
    }

    bool exists(int tensor) const
    {
        return tensor >= 0 && static_cast<std::size_t>(tensor) < network.tensors()->size();
    }

    bool isDefined(int tensor) const { return exists(tensor) && defined[static_cast<std::size_t>(tensor)]; }

    bool isFloatBinding(int index) const
    {
        const Tensor& tensor = tensorAt(index);
        return tensor.name() && tensor.type() == ElementType::Float32 && !format::isConstant(tensor);
    }

    Result<void> checkInput()
    {
        if (network.inputs()->size() != 1 || !exists(network.inputs()->Get(0))) {
            return failure("the network does not have exactly one input");
        }
        const int input = network.inputs()->Get(0);
        const auto* dims = tensorAt(input).dims();
        const auto sound = [](std::int64_t extent) { return extent > 0 && extent < format::maximumExtent; };
        if (!isFloatBinding(input) || !dims || dims->size() != 4 || dims->Get(3) != -1
            || !std::all_of(dims->begin(), dims->begin() + 3, sound)) {
            return failure("the network's input is not a picture of batch x channels x height x any width in floats");
        }
        defined[static_cast<std::size_t>(input)] = true;
        return {};
    }

    Result<void> checkOperations()
    {
        for (const Operation* operation : *network.operations()) {
            if (const Result<void> checked = checkOperation(*operation); !checked) {
                return failure(format::operationTitle(*operation) + ": " + checked.error().message);
            }
        }
        return {};
    }

    Result<void> checkOperation(const Operation& operation)
    {
        if (!format::isKnown(operation.kind_type())) {
            return failure("it is of an unknown kind");
        }
        const OperationRow& row = operationRow(operation.kind_type());
        if (!operation.kind() || !row.hasSoundAttributes(operation)) {
            return failure("its attributes are incomplete or out of range");
        }
        return checkInputs(operation, row.arity).and_then([&] { return checkResults(operation, row.arity); });
    }

    Result<void> checkInputs(const Operation& operation, const Arity& arity) const
    {
        const std::size_t count = operation.inputs() ? operation.inputs()->size() : 0;
        if (count < arity.requiredInputs || count > arity.inputs) {
            return failure("it has " + std::to_string(count) + " inputs");
        }
        for (std::size_t i = 0; i < count; ++i) {
            const int tensor = operation.inputs()->Get(static_cast<flatbuffers::uoffset_t>(i));
            if (tensor == -1 && i >= arity.requiredInputs) {
                continue;
            }
            if (!isDefined(tensor)) {
                return failure("input " + std::to_string(i) + " is not there when it runs");
            }
            if (!format::isConstant(tensorAt(tensor)) && i >= arity.firstConstant && i < arity.endConstant) {
                return failure("input " + std::to_string(i) + " is not a constant");
            }
        }
        return {};
    }

    Result<void> checkResults(const Operation& operation, const Arity& arity)
    {
        const std::size_t count = operation.outputs() ? operation.outputs()->size() : 0;
        if (count < 1 || count > arity.outputs) {
            return failure("it has " + std::to_string(count) + " outputs");
        }
        for (int tensor : *operation.outputs()) {
            if (tensor == -1 && arity.outputs > 1) {
                continue;
            }
            if (!exists(tensor) || isDefined(tensor)) {
                return failure("an output does not exist or is computed already");
            }
            defined[static_cast<std::size_t>(tensor)] = true;
        }
        return {};
    }

    Result<void> checkOutputs() const
    {
        std::vector<int> seen = {network.inputs()->Get(0)};
        for (int output : *network.outputs()) {
            if (!isDefined(output) || !isFloatBinding(output)) {
                return failure("an output of the network is not a computed, named tensor of floats");
            }
            if (std::find(seen.begin(), seen.end(), output) != seen.end()) {
                return failure(title(output) + " is bound twice");
            }
            seen.push_back(output);
        }
        return seen.size() > 1 ? Result<void>() : failure("the network has no output");
    }
};

} // namespace

Result<void> checkNetwork(const format::Network& network)
{
    return NetworkCheck(network).run();
}

} // namespace scribo::cpu
