#include "operations.h"
#include "recurrentweights.h"

#include "kernels/lstm.h"
#include "kernels/processor.h"
#include "kernels/rowproduct.h"

namespace scribo::cpu {

namespace {

using dnnl::rnn_direction;
using format::CellKind;

/// A recurrent layer with the layouts of everything that goes in and out.
struct Layer
{
    RecurrentSizes sizes;
    rnn_direction direction;
    /// T x N x I, and T x N x (directions * H).
    Layout source;
    Layout result;
    /// 1 x D x N x H; initial states only when there are any that are not zero, last ones only when
    /// they are read.
    Layout initial;
    Layout last;
    Layout weights;
    Layout recurrentWeights;
    Layout bias;
};

rnn_direction directionOf(format::Direction direction)
{
    switch (direction) {
    case format::Direction::Reverse:
        return rnn_direction::unidirectional_right2left;
    case format::Direction::Bidirectional:
        return rnn_direction::bidirectional_concat;
    case format::Direction::Forward:
        break;
    }
    return rnn_direction::unidirectional_left2right;
}

Layer describe(const PlanBuilder& plan, const format::Recurrent& recurrent)
{
    const Shape& data = plan.shape(plan.input(0));
    const std::int64_t directions = recurrent.direction() == format::Direction::Bidirectional ? 2 : 1;
    const std::int64_t hidden = recurrent.hidden_size();
    const RecurrentSizes sizes{recurrent.cell(), recurrent.linear_before_reset(), directions, data[2], hidden};
    const Layout state = plainLayout({1, directions, data[1], hidden});
    const bool started = plan.mayDiffer(4) || plan.mayDiffer(5);
    const bool finished = plan.isRead(1) || plan.isRead(2);
    return {sizes, directionOf(recurrent.direction()), plainLayout(data),
        plainLayout({data[0], data[1], directions * hidden}), started ? state : Layout(), finished ? state : Layout(),
        anyLayout({1, directions, data[2], sizes.gates(), hidden}),
        anyLayout({1, directions, hidden, sizes.gates(), hidden}),
        plainLayout({1, directions, sizes.biasGates(), hidden})};
}

constexpr auto inference = dnnl::prop_kind::forward_inference;

dnnl::lstm_forward::desc lstm(const Layer& layer)
{
    return {inference, layer.direction, layer.source, layer.initial, layer.initial, layer.weights,
        layer.recurrentWeights, layer.bias, layer.result, layer.last, layer.last};
}

template <class Gru>
typename Gru::desc gru(const Layer& layer)
{
    return {inference, layer.direction, layer.source, layer.initial, layer.weights, layer.recurrentWeights, layer.bias,
        layer.result, layer.last};
}

/// A state that goes in: a tensor, or zeros where only the other state of the cell is given.
PlanBuilder::Argument initialState(PlanBuilder& plan, const Layer& layer, int role, std::size_t input)
{
    const BufferId buffer = plan.mayDiffer(input) ? plan.plainOperand(plan.input(input)).buffer
                                                  : plan.zeros(countElements(layer.initial.dims()));
    return {role, buffer, layer.initial};
}

/// A state that comes out: a tensor, or room for what nobody reads.
PlanBuilder::Argument lastState(PlanBuilder& plan, const Layer& layer, int role, std::size_t output)
{
    const BufferId buffer
        = plan.isRead(output) ? plan.plainResult(plan.output(output)).buffer : plan.scratch(layer.last.get_size());
    return {role, buffer, layer.last};
}

/// The sequence lies as T x N x D x H; the tensor is T x D x N x H of the same memory.
void placeSequence(PlanBuilder& plan, const Layer& layer, PlanBuilder::Argument* result)
{
    const Shape extents = {layer.result.dims()[0], layer.result.dims()[1], layer.sizes.directions, layer.sizes.hidden};
    const Layout natural = plainLayout(extents);
    const Layout seen = transposed(natural, {0, 2, 1, 3});
    if (!plan.isRead(0)) {
        result->buffer = plan.scratch(layer.result.get_size());
    } else if (isPlain(seen)) {
        result->buffer = plan.plainResult(plan.output(0)).buffer;
    } else {
        result->buffer = plan.scratch(layer.result.get_size());
        plan.setResult(plan.output(0), {result->buffer, seen});
    }
}

template <class Primitive>
void addLayer(PlanBuilder& plan, const Layer& layer, const typename Primitive::desc& kind)
{
    const typename Primitive::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
    const RecurrentSizes& sizes = layer.sizes;
    std::unordered_map<int, dnnl::memory> fixed;
    fixed[DNNL_ARG_WEIGHTS_LAYER] = plan.weights(DNNL_ARG_WEIGHTS_LAYER, description.weights_layer_desc(),
        [&] { return recurrentWeights(sizes, plan.constant(plan.input(1)), sizes.inputs); });
    fixed[DNNL_ARG_WEIGHTS_ITER] = plan.weights(DNNL_ARG_WEIGHTS_ITER, description.weights_iter_desc(),
        [&] { return recurrentWeights(sizes, plan.constant(plan.input(2)), sizes.hidden); });
    fixed[DNNL_ARG_BIAS] = plan.weights(DNNL_ARG_BIAS, layer.bias,
        [&] { return recurrentBias(sizes, plan.input(3) < 0 ? nullptr : plan.constant(plan.input(3))); });

    const bool lstmCell = sizes.cell == CellKind::Lstm;
    PlanBuilder::Argument result{DNNL_ARG_DST_LAYER, -1, layer.result};
    std::vector<PlanBuilder::Argument> arguments
        = {{DNNL_ARG_SRC_LAYER, plan.plainOperand(plan.input(0)).buffer, layer.source}};
    if (!layer.initial.is_zero()) {
        arguments.push_back(initialState(plan, layer, DNNL_ARG_SRC_ITER, 4));
        if (lstmCell) {
            arguments.push_back(initialState(plan, layer, DNNL_ARG_SRC_ITER_C, 5));
        }
    }
    if (!layer.last.is_zero()) {
        arguments.push_back(lastState(plan, layer, DNNL_ARG_DST_ITER, 1));
        if (lstmCell) {
            arguments.push_back(lastState(plan, layer, DNNL_ARG_DST_ITER_C, 2));
        }
    }
    placeSequence(plan, layer, &result);
    arguments.push_back(result);
    plan.addPrimitive(Primitive(description), description.scratchpad_desc(), std::move(arguments), std::move(fixed));
}

/// Whether it is what our own kernel does: one sequence through an LSTM that begins with zeros and of which only the
/// sequence of states is read.
bool isPlainLstm(const PlanBuilder& plan, const Layer& layer)
{
    return layer.sizes.cell == CellKind::Lstm && plan.shape(plan.input(0))[1] == 1 && layer.initial.is_zero()
        && layer.last.is_zero();
}

/// Into how many parts the product before a recurrence is shared: few, because each reads all inputs again.
constexpr std::int64_t projectionParts = 4;

/// What the inputs and the biases add to the gates of all steps, in the kernel's order.
BufferId projectInputs(PlanBuilder& plan, const LstmShape& shape, std::int64_t inputs)
{
    const std::int64_t columns = shape.directions * shape.gateRow();
    const RowProduct product{
        shape.block, shape.steps, inputs, columns / shape.block, inputs, inputs, 0, columns, shape.block};
    const Layout weightLayout = plainLayout({product.weightCount()});
    const dnnl::memory weights = plan.weights(DNNL_ARG_WEIGHTS_0, weightLayout, [&] {
        return Weights{weightLayout, nullptr,
            weightsInOrder(product, gatesInBlocks(shape, plan.constant(plan.input(1)), inputs).data())};
    });
    const Layout biasLayout = plainLayout({columns});
    const dnnl::memory bias = plan.weights(DNNL_ARG_BIAS, biasLayout, [&] {
        std::vector<float> sums(static_cast<std::size_t>(columns));
        if (plan.input(3) >= 0) {
            sums = gatesInBlocks(shape, lstmBias(shape, plan.constant(plan.input(3))).data(), 1);
        }
        return Weights{biasLayout, nullptr, std::move(sums)};
    });
    const BufferId projected = plan.scratch(static_cast<std::size_t>(shape.steps * columns) * sizeof(float));
    const std::int64_t parts = std::min<std::int64_t>(product.vectors, projectionParts);
    plan.addKernel({plan.plainOperand(plan.input(0)).buffer, projected}, static_cast<int>(parts),
        [product, parts, weights, bias, kernel = multiplyRows(shape.block)](float* const* at, int index) {
            const ColumnPart part = columnPart(product, index, parts);
            kernel(part.product, at[0], static_cast<const float*>(weights.get_data_handle()) + part.weight,
                static_cast<const float*>(bias.get_data_handle()) + part.bias, at[1] + part.result);
        });
    return projected;
}

void addPlainLstm(PlanBuilder& plan, const Layer& layer)
{
    const RecurrentSizes& sizes = layer.sizes;
    const LstmShape shape{widestLanes(), plan.shape(plan.input(0))[0], sizes.hidden, sizes.directions,
        layer.direction == rnn_direction::unidirectional_right2left};
    const BufferId projected = projectInputs(plan, shape, sizes.inputs);
    const Layout ordered = plainLayout({shape.directions * shape.gateRow() * shape.hidden});
    const dnnl::memory weights = plan.weights(DNNL_ARG_WEIGHTS_1, ordered, [&] {
        return Weights{ordered, nullptr, recurrentInOrder(shape, plan.constant(plan.input(2)))};
    });
    const BufferId state = plan.scratch(static_cast<std::size_t>(shape.directions * shape.stateSize()) * sizeof(float));
    PlanBuilder::Argument result{DNNL_ARG_DST_LAYER, -1, layer.result};
    placeSequence(plan, layer, &result);
    plan.addKernel({projected, state, result.buffer}, static_cast<int>(shape.directions),
        [shape, weights](float* const* at, int direction) {
            runLstm(shape, direction, at[0], static_cast<const float*>(weights.get_data_handle()), at[1], at[2]);
        });
}

} // namespace

void addRecurrent(PlanBuilder& plan, const format::Operation& operation)
{
    const Layer layer = describe(plan, *operation.kind_as_Recurrent());
    if (isPlainLstm(plan, layer)) {
        addPlainLstm(plan, layer);
    } else if (layer.sizes.cell == CellKind::Lstm) {
        addLayer<dnnl::lstm_forward>(plan, layer, lstm(layer));
    } else if (layer.sizes.linearBeforeReset) {
        addLayer<dnnl::lbr_gru_forward>(plan, layer, gru<dnnl::lbr_gru_forward>(layer));
    } else {
        addLayer<dnnl::gru_forward>(plan, layer, gru<dnnl::gru_forward>(layer));
    }
}

} // namespace scribo::cpu
