#include "reference.h"

#include "referenceshapes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace scribo::test::reference {

namespace {

using format::ActivationKind;
using format::BinaryKind;
using format::UnaryKind;

double activate(ActivationKind kind, double alpha, double beta, double x)
{
    switch (kind) {
    case ActivationKind::None:
        return x;
    case ActivationKind::Relu:
        return std::max(x, 0.0);
    case ActivationKind::LeakyRelu:
        return x < 0 ? alpha * x : x;
    case ActivationKind::Sigmoid:
        return 1 / (1 + std::exp(-x));
    case ActivationKind::Tanh:
        return std::tanh(x);
    case ActivationKind::Elu:
        return x < 0 ? alpha * (std::exp(x) - 1) : x;
    case ActivationKind::HardSigmoid:
        return std::clamp(alpha * x + beta, 0.0, 1.0);
    case ActivationKind::HardSwish:
        return x * std::clamp(x / 6 + 0.5, 0.0, 1.0);
    case ActivationKind::Swish:
        return x / (1 + std::exp(-x));
    case ActivationKind::Gelu:
        return 0.5 * x * (1 + std::erf(x / std::sqrt(2.0)));
    case ActivationKind::Clip:
        return std::clamp(x, alpha, beta);
    case ActivationKind::Softplus:
        return std::log1p(std::exp(x));
    }
    return x;
}

} // namespace

Array activation(const format::ActivationT& activation, Array data)
{
    for (float& x : data.data) {
        x = static_cast<float>(activate(activation.kind, activation.alpha, activation.beta, x));
    }
    return data;
}

Array convolution(const format::ConvolutionT& convolution, const Array& data, const Array& weights, const Array* bias)
{
    const Shape& in = data.shape;
    const Shape& w = weights.shape;
    Shape out = {in[0], w[0], 0, 0};
    for (std::size_t i = 0; i < 2; ++i) {
        const std::int64_t reach = (w[2 + i] - 1) * convolution.dilations[i] + 1;
        out[2 + i] = (in[2 + i] + convolution.pads[i] + convolution.pads[2 + i] - reach) / convolution.strides[i] + 1;
    }
    Array result = Array::zeros(out);
    const std::int64_t perGroup = w[0] / convolution.groups;
    forEachIndex(out, [&](const Shape& o) {
        double sum = bias ? bias->data[static_cast<std::size_t>(o[1])] : 0.0;
        forEachIndex({w[1], w[2], w[3]}, [&](const Shape& k) {
            const std::int64_t y
                = o[2] * convolution.strides[0] - convolution.pads[0] + k[1] * convolution.dilations[0];
            const std::int64_t x
                = o[3] * convolution.strides[1] - convolution.pads[1] + k[2] * convolution.dilations[1];
            if (y >= 0 && y < in[2] && x >= 0 && x < in[3]) {
                const double value = data.at({o[0], o[1] / perGroup * w[1] + k[0], y, x});
                sum += value * weights.at({o[1], k[0], k[1], k[2]});
            }
        });
        result.at(o) = static_cast<float>(sum);
    });
    return convolution.activation ? activation(*convolution.activation, result) : result;
}

Array pooling(const format::PoolingT& pooling, const Array& data)
{
    const Shape& in = data.shape;
    Shape out = {in[0], in[1], 0, 0};
    for (std::size_t i = 0; i < 2; ++i) {
        const std::int64_t room = in[2 + i] + pooling.pads[i] + pooling.pads[2 + i] - pooling.kernel[i];
        const std::int64_t stride = pooling.strides[i];
        out[2 + i] = (pooling.ceil_mode ? (room + stride - 1) / stride : room / stride) + 1;
        if (pooling.ceil_mode && (out[2 + i] - 1) * stride >= in[2 + i] + pooling.pads[i]) {
            --out[2 + i];
        }
    }
    Array result = Array::zeros(out);
    forEachIndex(out, [&](const Shape& o) {
        double sum = 0;
        double most = -std::numeric_limits<double>::infinity();
        int inside = 0;
        int padded = 0;
        forEachIndex({pooling.kernel[0], pooling.kernel[1]}, [&](const Shape& k) {
            const std::int64_t y = o[2] * pooling.strides[0] - pooling.pads[0] + k[0];
            const std::int64_t x = o[3] * pooling.strides[1] - pooling.pads[1] + k[1];
            padded += y < in[2] + pooling.pads[2] && x < in[3] + pooling.pads[3] ? 1 : 0;
            if (y >= 0 && y < in[2] && x >= 0 && x < in[3]) {
                const double value = data.at({o[0], o[1], y, x});
                sum += value;
                most = std::max(most, value);
                ++inside;
            }
        });
        const int counted = pooling.kind == format::PoolingKind::AverageIncludePad ? padded : inside;
        result.at(o) = static_cast<float>(pooling.kind == format::PoolingKind::Max ? most : sum / counted);
    });
    return result;
}

Array resize(const Array& data, const Shape& shape)
{
    // The centre of row or column `index` of the result, along `axis` of the source.
    const auto centre = [&](std::size_t axis, std::int64_t index) {
        const auto extent = static_cast<double>(data.shape[axis]);
        return std::clamp(
            (static_cast<double>(index) + 0.5) * extent / static_cast<double>(shape[axis]) - 0.5, 0.0, extent - 1);
    };
    Array result = Array::zeros(shape);
    forEachIndex(shape, [&](const Shape& o) {
        double sum = 0;
        forEachIndex({data.shape[2], data.shape[3]}, [&](const Shape& pixel) {
            const double row = 1 - std::abs(centre(2, o[2]) - static_cast<double>(pixel[0]));
            const double column = 1 - std::abs(centre(3, o[3]) - static_cast<double>(pixel[1]));
            sum += std::max(row, 0.0) * std::max(column, 0.0) * data.at({o[0], o[1], pixel[0], pixel[1]});
        });
        result.at(o) = static_cast<float>(sum);
    });
    return result;
}

Array gridSample(const format::GridSampleT& sample, const Array& data, const Array& grid)
{
    // Where a place of the grid lies along an axis of the source.
    const auto position = [&](double place, std::size_t axis) {
        const auto extent = static_cast<double>(data.shape[axis]);
        const double at = sample.align_corners ? (place + 1) / 2 * (extent - 1) : ((place + 1) * extent - 1) / 2;
        return sample.border ? std::clamp(at, 0.0, extent - 1) : at;
    };
    Array result = Array::zeros({data.shape[0], data.shape[1], grid.shape[1], grid.shape[2]});
    forEachIndex(result.shape, [&](const Shape& o) {
        double sum = 0;
        forEachIndex({data.shape[2], data.shape[3]}, [&](const Shape& pixel) {
            const double column = position(grid.at({o[0], o[2], o[3], 0}), 3) - static_cast<double>(pixel[1]);
            const double row = position(grid.at({o[0], o[2], o[3], 1}), 2) - static_cast<double>(pixel[0]);
            sum += std::max(1 - std::abs(row), 0.0) * std::max(1 - std::abs(column), 0.0)
                * data.at({o[0], o[1], pixel[0], pixel[1]});
        });
        result.at(o) = static_cast<float>(sum);
    });
    return result;
}

Array reduction(const format::ReductionT& reduction, const Array& data)
{
    Shape kept = data.shape;
    for (int axis : reduction.axes) {
        kept[normal(axis, data.shape)] = 1;
    }
    const bool most = reduction.kind == format::ReductionKind::Max;
    std::vector<double> sums(
        static_cast<std::size_t>(Array::zeros(kept).count()), most ? -std::numeric_limits<double>::infinity() : 0.0);
    // Which element of the result each element goes to, found through an array of positions.
    Array positions = Array::zeros(kept);
    std::iota(positions.data.begin(), positions.data.end(), 0.0F);
    forEachIndex(data.shape, [&](const Shape& index) {
        double& sum = sums[static_cast<std::size_t>(positions.at(broadcastIndex(kept, index)))];
        const double value = data.at(index);
        sum = most ? std::max(sum, value) : sum + value;
    });
    const bool mean = reduction.kind == format::ReductionKind::Mean;
    Array result = Array::zeros(kept);
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const double parts = static_cast<double>(data.count()) / static_cast<double>(sums.size());
        result.data[i] = static_cast<float>(mean ? sums[i] / parts : sums[i]);
    }
    if (!reduction.keep_dims) {
        result.shape.clear();
        for (std::size_t axis = 0; axis < data.shape.size(); ++axis) {
            const bool reduced = std::any_of(reduction.axes.begin(), reduction.axes.end(),
                [&](int given) { return normal(given, data.shape) == axis; });
            if (!reduced) {
                result.shape.push_back(data.shape[axis]);
            }
        }
    }
    return result;
}

namespace {

double sigmoid(double x)
{
    return 1 / (1 + std::exp(-x));
}

/// One direction of a recurrent layer, one picture of the batch.
class Cell
{
public:
    Cell(const format::RecurrentT& recurrent, const RecurrentInputs& inputs, std::int64_t direction)
        : recurrent(recurrent)
        , inputs(inputs)
        , direction(direction)
        , hidden(recurrent.hidden_size)
        , gates(recurrent.cell == format::CellKind::Lstm ? 4 : 3)
    {
    }

    void step(std::int64_t time, std::int64_t picture, std::vector<double>* h, std::vector<double>* c) const
    {
        const std::vector<double> before = *h;
        for (std::int64_t unit = 0; unit < hidden; ++unit) {
            const auto gate
                = [&](std::int64_t g) { return fromInput(g, unit, time, picture) + fromState(g, unit, before); };
            auto& state = (*h)[static_cast<std::size_t>(unit)];
            if (gates == 4) {
                double& cell = (*c)[static_cast<std::size_t>(unit)];
                cell = sigmoid(gate(2)) * cell + sigmoid(gate(0)) * std::tanh(gate(3));
                state = sigmoid(gate(1)) * std::tanh(cell);
            } else {
                const double update = sigmoid(gate(0));
                state = (1 - update) * candidate(unit, time, picture, before) + update * state;
            }
        }
    }

private:
    double candidate(
        std::int64_t unit, std::int64_t time, std::int64_t picture, const std::vector<double>& before) const
    {
        const auto reset
            = [&](std::int64_t u) { return sigmoid(fromInput(1, u, time, picture) + fromState(1, u, before)); };
        if (recurrent.linear_before_reset) {
            return std::tanh(fromInput(2, unit, time, picture) + reset(unit) * fromState(2, unit, before));
        }
        std::vector<double> faded = before;
        for (std::int64_t u = 0; u < hidden; ++u) {
            faded[static_cast<std::size_t>(u)] *= reset(u);
        }
        return std::tanh(fromInput(2, unit, time, picture) + fromState(2, unit, faded));
    }

    double fromInput(std::int64_t gate, std::int64_t unit, std::int64_t time, std::int64_t picture) const
    {
        double sum = inputs.bias ? inputs.bias->at({direction, gate * hidden + unit}) : 0.0;
        for (std::int64_t i = 0; i < inputs.data.shape[2]; ++i) {
            sum += static_cast<double>(inputs.data.at({time, picture, i}))
                * inputs.weights.at({direction, gate * hidden + unit, i});
        }
        return sum;
    }

    double fromState(std::int64_t gate, std::int64_t unit, const std::vector<double>& state) const
    {
        double sum = inputs.bias ? inputs.bias->at({direction, (gates + gate) * hidden + unit}) : 0.0;
        for (std::int64_t i = 0; i < hidden; ++i) {
            sum += state[static_cast<std::size_t>(i)]
                * inputs.recurrentWeights.at({direction, gate * hidden + unit, i});
        }
        return sum;
    }

    const format::RecurrentT& recurrent;
    const RecurrentInputs& inputs;
    std::int64_t direction;
    std::int64_t hidden;
    std::int64_t gates;
};

} // namespace

std::vector<Array> recurrent(const format::RecurrentT& recurrent, const RecurrentInputs& inputs)
{
    const std::int64_t times = inputs.data.shape[0];
    const std::int64_t pictures = inputs.data.shape[1];
    const std::int64_t hidden = recurrent.hidden_size;
    const std::int64_t directions = recurrent.direction == format::Direction::Bidirectional ? 2 : 1;
    std::vector<Array> results = {Array::zeros({times, directions, pictures, hidden}),
        Array::zeros({directions, pictures, hidden}), Array::zeros({directions, pictures, hidden})};
    for (std::int64_t direction = 0; direction < directions; ++direction) {
        const bool backwards = recurrent.direction == format::Direction::Reverse || direction == 1;
        const Cell cell(recurrent, inputs, direction);
        for (std::int64_t picture = 0; picture < pictures; ++picture) {
            std::vector<double> h(static_cast<std::size_t>(hidden), 0.0);
            std::vector<double> c = h;
            for (std::int64_t unit = 0; unit < hidden; ++unit) {
                const auto u = static_cast<std::size_t>(unit);
                h[u] = inputs.initialHidden ? inputs.initialHidden->at({direction, picture, unit}) : 0.0;
                c[u] = inputs.initialCell ? inputs.initialCell->at({direction, picture, unit}) : 0.0;
            }
            for (std::int64_t i = 0; i < times; ++i) {
                const std::int64_t time = backwards ? times - 1 - i : i;
                cell.step(time, picture, &h, &c);
                for (std::int64_t unit = 0; unit < hidden; ++unit) {
                    const auto u = static_cast<std::size_t>(unit);
                    results[0].at({time, direction, picture, unit}) = static_cast<float>(h[u]);
                    results[1].at({direction, picture, unit}) = static_cast<float>(h[u]);
                    results[2].at({direction, picture, unit}) = static_cast<float>(c[u]);
                }
            }
        }
    }
    return results;
}

Array fullyConnected(const format::FullyConnectedT& layer, const Array& data, const Array& weights, const Array* bias)
{
    Array result = matrixProduct(data, weights);
    if (bias) {
        result = binary(BinaryKind::Add, result, *bias);
    }
    return layer.activation ? activation(*layer.activation, result) : result;
}

Array matrixProduct(const Array& left, const Array& right)
{
    Array a = left;
    Array b = right;
    if (left.shape.size() == 1) {
        a.shape.insert(a.shape.begin(), 1);
    }
    if (right.shape.size() == 1) {
        b.shape.push_back(1);
    }
    const std::int64_t rows = a.shape[a.shape.size() - 2];
    const std::int64_t inner = a.shape.back();
    const std::int64_t columns = b.shape.back();
    Shape outer = broadcast({a.shape.begin(), a.shape.end() - 2}, {b.shape.begin(), b.shape.end() - 2});
    Shape full = outer;
    full.push_back(rows);
    full.push_back(columns);
    Array result = Array::zeros(full);
    forEachIndex(full, [&](const Shape& index) {
        const Shape front(index.begin(), index.end() - 2);
        Shape fromA = broadcastIndex({a.shape.begin(), a.shape.end() - 2}, front);
        Shape fromB = broadcastIndex({b.shape.begin(), b.shape.end() - 2}, front);
        fromA.insert(fromA.end(), {index[index.size() - 2], 0});
        fromB.insert(fromB.end(), {0, index.back()});
        double sum = 0;
        for (std::int64_t i = 0; i < inner; ++i) {
            fromA.back() = i;
            fromB[fromB.size() - 2] = i;
            sum += static_cast<double>(a.at(fromA)) * b.at(fromB);
        }
        result.at(index) = static_cast<float>(sum);
    });
    result.shape = outer;
    if (left.shape.size() > 1) {
        result.shape.push_back(rows);
    }
    if (right.shape.size() > 1) {
        result.shape.push_back(columns);
    }
    return result;
}

Array softmax(const format::SoftmaxT& softmax, const Array& data)
{
    const std::size_t axis = normal(softmax.axis, data.shape);
    Array result = data;
    forEachIndex(data.shape, [&](const Shape& index) {
        Shape other = index;
        double sum = 0;
        for (other[axis] = 0; other[axis] < data.shape[axis]; ++other[axis]) {
            sum += std::exp(static_cast<double>(data.at(other)) - data.at(index));
        }
        result.at(index) = static_cast<float>(softmax.logarithm ? -std::log(sum) : 1 / sum);
    });
    return result;
}

Array binary(BinaryKind kind, const Array& left, const Array& right)
{
    Array result = Array::zeros(broadcast(left.shape, right.shape));
    forEachIndex(result.shape, [&](const Shape& index) {
        const float a = left.at(broadcastIndex(left.shape, index));
        const float b = right.at(broadcastIndex(right.shape, index));
        float& to = result.at(index);
        switch (kind) {
        case BinaryKind::Add:
            to = a + b;
            break;
        case BinaryKind::Subtract:
            to = a - b;
            break;
        case BinaryKind::Multiply:
            to = a * b;
            break;
        case BinaryKind::Divide:
            to = a / b;
            break;
        case BinaryKind::Power:
            to = std::pow(a, b);
            break;
        case BinaryKind::Maximum:
            to = a > b ? a : b;
            break;
        case BinaryKind::Minimum:
            to = a < b ? a : b;
            break;
        }
    });
    return result;
}

Array unary(UnaryKind kind, Array data)
{
    using Function = double (*)(double);
    const Function functions[] = {[](double x) { return std::sqrt(x); }, [](double x) { return std::exp(x); },
        [](double x) { return std::log(x); }, [](double x) { return -x; }, [](double x) { return std::fabs(x); },
        [](double x) { return 1 / x; }, [](double x) { return std::erf(x); }, [](double x) { return std::floor(x); },
        [](double x) { return std::ceil(x); }};
    for (float& x : data.data) {
        x = static_cast<float>(functions[static_cast<int>(kind)](x));
    }
    return data;
}

Array channelAffine(Array data, const Array& scale, const Array& shift)
{
    forEachIndex(data.shape,
        [&](const Shape& index) { data.at(index) = data.at(index) * scale.at({index[1]}) + shift.at({index[1]}); });
    return data;
}

Array layerNormalisation(
    const format::LayerNormalisationT& normalisation, const Array& data, const Array& scale, const Array* shift)
{
    const std::size_t axis = normal(normalisation.axis, data.shape);
    std::size_t count = 1;
    for (std::size_t i = axis; i < data.shape.size(); ++i) {
        count *= static_cast<std::size_t>(data.shape[i]);
    }
    Array result = data;
    for (std::size_t start = 0; start < data.data.size(); start += count) {
        double mean = 0;
        double variance = 0;
        for (std::size_t i = 0; i < count; ++i) {
            mean += data.data[start + i] / static_cast<double>(count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            variance += std::pow(data.data[start + i] - mean, 2) / static_cast<double>(count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const double whitened
                = (data.data[start + i] - mean) / std::sqrt(variance + static_cast<double>(normalisation.epsilon));
            result.data[start + i] = static_cast<float>(whitened * scale.data[i] + (shift ? shift->data[i] : 0.0F));
        }
    }
    return result;
}

} // namespace scribo::test::reference
