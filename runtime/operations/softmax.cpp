#include "operations.h"

namespace scribo::cpu {

namespace {

template <class Primitive>
void addPrimitive(PlanBuilder& plan, int axis)
{
    const Operand source = plan.plainOperand(plan.input(0));
    const typename Primitive::desc kind(dnnl::prop_kind::forward_inference, source.layout, axis);
    const typename Primitive::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
    const Operand result = plan.plainResult(plan.output(0));
    plan.addPrimitive(Primitive(description), description.scratchpad_desc(),
        {{DNNL_ARG_SRC, source.buffer, source.layout}, {DNNL_ARG_DST, result.buffer, result.layout}});
}

} // namespace

void addSoftmax(PlanBuilder& plan, const format::Operation& operation)
{
    const format::Softmax& softmax = *operation.kind_as_Softmax();
    const int axis = normalAxis(softmax.axis(), plan.value(plan.input(0)).rank());
    if (softmax.logarithm()) {
        addPrimitive<dnnl::logsoftmax_forward>(plan, axis);
    } else {
        addPrimitive<dnnl::softmax_forward>(plan, axis);
    }
}

} // namespace scribo::cpu
