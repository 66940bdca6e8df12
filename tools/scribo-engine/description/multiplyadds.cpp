#include "multiplyadds.h"

#include <functional>
#include <numeric>

namespace scribo::tool {

namespace {

using format::OperationKind;
using Shape = std::vector<std::int64_t>;

std::int64_t count(const Shape& shape)
{
    return std::accumulate(shape.begin(), shape.end(), std::int64_t(1), std::multiplies<>());
}

/// Every time step multiplies the input and the hidden state with the weights of all gates.
std::int64_t ofRecurrent(const Shape& data, const Shape& weights, const Shape& recurrentWeights)
{
    return data.size() < 2 ? 0 : data[0] * data[1] * (count(weights) + count(recurrentWeights));
}

} // namespace

std::int64_t multiplyAdds(const format::Operation& operation, const std::vector<Shape>& shapes)
{
    const auto shape = [&](flatbuffers::uoffset_t input) {
        return shapes[static_cast<std::size_t>(operation.inputs()->Get(input))];
    };
    const auto output = [&] { return shapes[static_cast<std::size_t>(operation.outputs()->Get(0))]; };
    switch (operation.kind_type()) {
    case OperationKind::Convolution: {
        // Every output element is the sum over one filter.
        const Shape weights = shape(1);
        return weights.empty() || weights[0] == 0 ? 0 : count(output()) * (count(weights) / weights[0]);
    }
    case OperationKind::Recurrent:
        return ofRecurrent(shape(0), shape(1), shape(2));
    case OperationKind::FullyConnected:
    case OperationKind::MatrixProduct: {
        const Shape left = shape(0);
        return left.empty() ? 0 : count(output()) * left.back();
    }
    default:
        return 0;
    }
}

} // namespace scribo::tool
