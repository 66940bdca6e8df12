#include "operationrules.h"

#include <algorithm>
#include <limits>

namespace scribo::format {

namespace {

constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

template <class Enumeration>
bool known(Enumeration value)
{
    return value >= Enumeration::MIN && value <= Enumeration::MAX;
}

/// An absent activation is none.
bool known(const Activation* activation)
{
    return !activation || known(activation->kind());
}

template <class Number>
bool hasLength(const flatbuffers::Vector<Number>* list, std::size_t length)
{
    return list && list->size() == length;
}

/// Every number of a window's list within what a picture can need.
bool within(const flatbuffers::Vector<int>* list, int smallest)
{
    constexpr int largest = 1 << 14;
    return std::all_of(list->begin(), list->end(), [&](int number) { return number >= smallest && number <= largest; });
}

bool isWindowList(const flatbuffers::Vector<int>* list, std::size_t length, int smallest)
{
    return hasLength(list, length) && within(list, smallest);
}

bool sound(const Convolution& convolution)
{
    return isWindowList(convolution.strides(), 2, 1) && isWindowList(convolution.pads(), 4, 0)
        && isWindowList(convolution.dilations(), 2, 1) && convolution.groups() >= 1 && known(convolution.activation());
}

bool sound(const Pooling& pooling)
{
    return known(pooling.kind()) && isWindowList(pooling.kernel(), 2, 1) && isWindowList(pooling.strides(), 2, 1)
        && isWindowList(pooling.pads(), 4, 0);
}

bool sound(const Recurrent& recurrent)
{
    constexpr int largestState = 1 << 16;
    return known(recurrent.cell()) && known(recurrent.direction()) && recurrent.hidden_size() >= 1
        && recurrent.hidden_size() <= largestState;
}

bool sound(const Split& split)
{
    return split.sizes() && isAligned(split.sizes());
}

/// Enumerations and lists of the kinds that have any which must not be absent or out of range.
bool soundAttributes(const Operation& operation)
{
    switch (operation.kind_type()) {
    case OperationKind::Activation:
        return known(operation.kind_as_Activation());
    case OperationKind::Convolution:
        return sound(*operation.kind_as_Convolution());
    case OperationKind::Pooling:
        return sound(*operation.kind_as_Pooling());
    case OperationKind::Reduction:
        return known(operation.kind_as_Reduction()->kind());
    case OperationKind::Recurrent:
        return sound(*operation.kind_as_Recurrent());
    case OperationKind::FullyConnected:
        return known(operation.kind_as_FullyConnected()->activation());
    case OperationKind::Binary:
        return known(operation.kind_as_Binary()->kind());
    case OperationKind::Unary:
        return known(operation.kind_as_Unary()->kind());
    case OperationKind::Cast:
        return known(operation.kind_as_Cast()->to());
    case OperationKind::Fill:
        return known(operation.kind_as_Fill()->type());
    case OperationKind::Split:
        return sound(*operation.kind_as_Split());
    case OperationKind::Pad:
        return isAligned(operation.kind_as_Pad()->begin()) && isAligned(operation.kind_as_Pad()->end());
    default:
        return true;
    }
}

} // namespace

Arity operationArity(OperationKind kind)
{
    // required and possible inputs, optional ones, constants from and up to, outputs, optional ones
    switch (kind) {
    case OperationKind::Convolution:
    case OperationKind::FullyConnected:
        return {2, 3, true, 1, 3, 1, false};
    case OperationKind::Recurrent:
        return {3, 6, true, 1, 4, 3, true};
    case OperationKind::ChannelAffine:
        return {3, 3, false, 1, 3, 1, false};
    case OperationKind::LayerNormalisation:
        return {2, 3, true, 0, 0, 1, false};
    case OperationKind::MatrixProduct:
    case OperationKind::Binary:
    case OperationKind::Reshape:
    case OperationKind::Gather:
    case OperationKind::Expand:
    case OperationKind::Resize:
        return {2, 2, false, 0, 0, 1, false};
    case OperationKind::Slice:
        return {3, 5, true, 0, 0, 1, false};
    case OperationKind::Concat:
        return {1, anyNumber, false, 0, 0, 1, false};
    case OperationKind::Split:
        return {1, 1, false, 0, 0, anyNumber, true};
    default:
        return {};
    }
}

bool checkAttributes(const Operation& operation, std::string* error)
{
    if (operation.kind_type() <= OperationKind::NONE || operation.kind_type() > OperationKind::MAX) {
        *error = "it is of an unknown kind";
        return false;
    }
    if (!operation.kind() || !soundAttributes(operation)) {
        *error = "its attributes are incomplete or out of range";
        return false;
    }
    return true;
}

} // namespace scribo::format
