#include "operations.h"

namespace scribo::cpu {

void addResize(PlanBuilder& plan, const format::Operation&)
{
    using dnnl::resampling_forward;
    const Operand source = plan.operand(plan.input(0));
    if (plan.shape(plan.input(0)) == plan.shape(plan.output(0))) {
        plan.setResult(plan.output(0), source);
        return;
    }
    const resampling_forward::desc kind(dnnl::prop_kind::forward_inference, dnnl::algorithm::resampling_linear,
        source.layout, anyLayout(plan.shape(plan.output(0))));
    const resampling_forward::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
    const Operand result = plan.result(plan.output(0), description.dst_desc());
    plan.addPrimitive(resampling_forward(description), description.scratchpad_desc(),
        {{DNNL_ARG_SRC, source.buffer, source.layout}, {DNNL_ARG_DST, result.buffer, result.layout}});
}

} // namespace scribo::cpu
