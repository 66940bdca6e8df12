#include "networkcheck.h"

#include "operationrules.h"

#include <algorithm>
#include <vector>

namespace scribo::format {

namespace {

/// The number of elements in `dims`; -1 when an extent makes no sense or the product overflows.
std::int64_t elementCount(const flatbuffers::Vector<std::int64_t>* dims)
{
    std::int64_t count = 1;
    for (std::size_t i = 0; dims && i < dims->size(); ++i) {
        const std::int64_t extent = dims->Get(static_cast<flatbuffers::uoffset_t>(i));
        if (extent < 0 || extent > maximumExtent || __builtin_mul_overflow(count, extent, &count)) {
            return -1;
        }
    }
    return count;
}

/// One walk over a network; the first fault ends it.
class NetworkCheck
{
public:
    NetworkCheck(const Network& checked, std::string* reason)
        : network(checked)
        , error(reason)
    {
    }

    bool run() { return checkTables() && checkTensors() && checkInput() && checkOperations() && checkOutputs(); }

private:
    const Network& network;
    std::string* error;
    /// Per tensor: whether its value is there for an operation to read.
    std::vector<bool> defined;

    bool fail(const std::string& reason)
    {
        *error = reason;
        return false;
    }

    bool checkTables()
    {
        if (!network.tensors() || !network.operations() || !network.inputs() || !network.outputs()) {
            return fail("the network has no tensors, operations, inputs or outputs");
        }
        const auto absent = [](const auto* entry) { return !entry; };
        if (std::any_of(network.tensors()->begin(), network.tensors()->end(), absent)
            || std::any_of(network.operations()->begin(), network.operations()->end(), absent)) {
            return fail("the network has an empty entry");
        }
        if (network.operations()->size() > maximumOperations || network.tensors()->size() > maximumTensors) {
            return fail("the network has too many operations or tensors");
        }
        if (network.minimum_width() < 1 || network.minimum_width() > network.maximum_width()
            || network.maximum_width() > maximumWidth) {
            return fail("the network's range of widths, " + std::to_string(network.minimum_width()) + " to "
                + std::to_string(network.maximum_width()) + ", makes no sense");
        }
        return true;
    }

    std::string title(std::size_t index) const
    {
        const Tensor* tensor = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(index));
        return "tensor " + std::to_string(index) + (tensor->name() ? " '" + tensor->name()->str() + "'" : "");
    }

    bool checkTensors()
    {
        for (std::size_t i = 0; i < network.tensors()->size(); ++i) {
            const Tensor* tensor = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(i));
            if (tensor->type() < ElementType::MIN || tensor->type() > ElementType::MAX) {
                return fail(title(i) + " has an unknown type");
            }
            if (!isAligned(tensor->dims())) {
                return fail(title(i) + " is not aligned");
            }
            if (tensor->dims() && tensor->dims()->size() > maximumRank) {
                return fail(title(i) + " has more than " + std::to_string(maximumRank) + " dimensions");
            }
            defined.push_back(isConstant(*tensor));
            if (isConstant(*tensor) && !checkConstant(i, *tensor)) {
                return false;
            }
        }
        return true;
    }

    bool checkConstant(std::size_t index, const Tensor& tensor)
    {
        const std::int64_t count = elementCount(tensor.dims());
        const auto size = static_cast<std::int64_t>(elementSize(tensor.type()));
        const std::int64_t stored = tensor.constant() ? tensor.constant()->size() : 0;
        if (count < 0 || count > maximumExtent || count * size != stored) {
            return fail(title(index) + " has other data than its extents say");
        }
        return true;
    }

    bool exists(int tensor) const
    {
        return tensor >= 0 && static_cast<std::size_t>(tensor) < network.tensors()->size();
    }

    bool isFloatBinding(int tensor) const
    {
        const Tensor* entry = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(tensor));
        return entry->name() && entry->type() == ElementType::Float32 && !isConstant(*entry);
    }

    bool checkInput()
    {
        if (network.inputs()->size() != 1 || !exists(network.inputs()->Get(0))) {
            return fail("the network does not have exactly one input");
        }
        const int input = network.inputs()->Get(0);
        const auto* dims = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(input))->dims();
        const auto sound = [](std::int64_t extent) { return extent > 0 && extent < maximumExtent; };
        if (!isFloatBinding(input) || !dims || dims->size() != 4 || dims->Get(3) != -1
            || !std::all_of(dims->begin(), dims->begin() + 3, sound)) {
            return fail("the network's input is not a picture of batch x channels x height x any width in floats");
        }
        defined[static_cast<std::size_t>(input)] = true;
        return true;
    }

    bool checkOperations()
    {
        for (const Operation* operation : *network.operations()) {
            std::string reason;
            if (!checkAttributes(*operation, &reason) || !checkInputs(*operation, &reason)
                || !checkResults(*operation, &reason)) {
                return fail(operationTitle(*operation) + ": " + reason);
            }
        }
        return true;
    }

    bool checkInputs(const Operation& operation, std::string* reason)
    {
        const Arity arity = operationArity(operation.kind_type());
        const std::size_t count = operation.inputs() ? operation.inputs()->size() : 0;
        if (count < arity.requiredInputs || count > arity.inputs) {
            *reason = "it has " + std::to_string(count) + " inputs";
            return false;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const int tensor = operation.inputs()->Get(static_cast<flatbuffers::uoffset_t>(i));
            if (tensor == -1 && i >= arity.requiredInputs && arity.optionalInputs) {
                continue;
            }
            if (!exists(tensor) || !defined[static_cast<std::size_t>(tensor)]) {
                *reason = "input " + std::to_string(i) + " is not there when it runs";
                return false;
            }
            const Tensor* entry = network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(tensor));
            if (!isConstant(*entry) && i >= arity.firstConstant && i < arity.endConstant) {
                *reason = "input " + std::to_string(i) + " is not a constant";
                return false;
            }
        }
        return true;
    }

    bool checkResults(const Operation& operation, std::string* reason)
    {
        const Arity arity = operationArity(operation.kind_type());
        const std::size_t count = operation.outputs() ? operation.outputs()->size() : 0;
        if (count < 1 || count > arity.outputs) {
            *reason = "it has " + std::to_string(count) + " outputs";
            return false;
        }
        for (int tensor : *operation.outputs()) {
            if (tensor == -1 && arity.optionalOutputs) {
                continue;
            }
            if (!exists(tensor) || defined[static_cast<std::size_t>(tensor)]) {
                *reason = "an output does not exist or is computed already";
                return false;
            }
            defined[static_cast<std::size_t>(tensor)] = true;
        }
        return true;
    }

    bool checkOutputs()
    {
        std::vector<int> seen = {network.inputs()->Get(0)};
        for (int output : *network.outputs()) {
            if (!exists(output) || !defined[static_cast<std::size_t>(output)] || !isFloatBinding(output)) {
                return fail("an output of the network is not a computed, named tensor of floats");
            }
            if (std::find(seen.begin(), seen.end(), output) != seen.end()) {
                return fail(title(static_cast<std::size_t>(output)) + " is bound twice");
            }
            seen.push_back(output);
        }
        return seen.size() > 1 || fail("the network has no output");
    }
};

} // namespace

bool isConstant(const Tensor& tensor)
{
    return tensor.constant()
        || (tensor.dims() && std::find(tensor.dims()->begin(), tensor.dims()->end(), 0) != tensor.dims()->end());
}

bool checkNetwork(const Network& network, std::string* error)
{
    std::string ignored;
    return NetworkCheck(network, error ? error : &ignored).run();
}

std::string operationTitle(const Operation& operation)
{
    const std::string name = operation.name() ? operation.name()->str() : std::string();
    const bool known = operation.kind_type() > OperationKind::NONE && operation.kind_type() <= OperationKind::MAX;
    return std::string(known ? EnumNameOperationKind(operation.kind_type()) : "operation") + " '" + name + "'";
}

} // namespace scribo::format
