#include "activation.h"
#include "operations.h"

namespace scribo::cpu {

using dnnl::inner_product_forward;

void addFullyConnected(PlanBuilder& plan, const format::Operation& operation)
{
    // However many axes stand in front, they are rows of one matrix.
    const Shape& data = plan.shape(plan.input(0));
    const Shape& weightShape = plan.shape(plan.input(1));
    const std::int64_t inputs = weightShape[0];
    const std::int64_t outputs = weightShape[1];
    const std::int64_t rows = countElements(data) / inputs;
    const Layout sourceLayout = plainLayout({rows, inputs});
    const Layout resultLayout = plainLayout({rows, outputs});
    const Layout biasLayout = plan.input(2) >= 0 ? plainLayout({outputs}) : Layout();

    dnnl::primitive_attr attributes = PlanBuilder::attributes();
    appendActivation(&attributes, operation.kind_as_FullyConnected()->activation());
    const inner_product_forward::desc kind(
        dnnl::prop_kind::forward_inference, sourceLayout, anyLayout({outputs, inputs}), biasLayout, resultLayout);
    const inner_product_forward::primitive_desc description(kind, attributes, plan.engine());

    const dnnl::memory weights = plan.weights(DNNL_ARG_WEIGHTS, description.weights_desc(), [&] {
        return Weights{stridedLayout({outputs, inputs}, {1, outputs}), plan.constant(plan.input(1)), {}};
    });
    const Operand source = plan.plainOperand(plan.input(0));
    const Operand result = plan.plainResult(plan.output(0));
    std::vector<PlanBuilder::Argument> arguments
        = {{DNNL_ARG_SRC, source.buffer, sourceLayout}, {DNNL_ARG_DST, result.buffer, resultLayout}};
    if (plan.input(2) >= 0) {
        arguments.push_back({DNNL_ARG_BIAS, plan.plainOperand(plan.input(2)).buffer, biasLayout});
    }
    plan.addPrimitive(
        inner_product_forward(description), description.scratchpad_desc(), arguments, {{DNNL_ARG_WEIGHTS, weights}});
}

} // namespace scribo::cpu
