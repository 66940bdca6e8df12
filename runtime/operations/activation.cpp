#include "activation.h"

#include "operations.h"

#include <algorithm>

namespace scribo::cpu {

using dnnl::algorithm;
using format::ActivationKind;

namespace {

/// The function alone, without what is done to its value.
std::vector<ElementFunction> plainFunctions(const format::Activation* activation)
{
    const float alpha = activation ? activation->alpha() : 0;
    const float beta = activation ? activation->beta() : 0;
    switch (activation ? activation->kind() : ActivationKind::None) {
    case ActivationKind::None:
        return {};
    case ActivationKind::Relu:
        return {{algorithm::eltwise_relu}};
    case ActivationKind::LeakyRelu:
        return {{algorithm::eltwise_relu, alpha}};
    case ActivationKind::Sigmoid:
        return {{algorithm::eltwise_logistic}};
    case ActivationKind::Tanh:
        return {{algorithm::eltwise_tanh}};
    case ActivationKind::Elu:
        return {{algorithm::eltwise_elu, alpha}};
    case ActivationKind::HardSigmoid: // in hardSigmoid()
        return {};
    case ActivationKind::HardSwish:
        return {{algorithm::eltwise_hardswish}};
    case ActivationKind::Swish:
        return {{algorithm::eltwise_swish, 1}};
    case ActivationKind::Gelu:
        return {{algorithm::eltwise_gelu_erf}};
    case ActivationKind::Clip:
        return {{algorithm::eltwise_clip, alpha, beta}};
    case ActivationKind::Softplus:
        return {{algorithm::eltwise_soft_relu}};
    }
    return {};
}

/// scale * clip(alpha x + beta, 0, 1) + shift with the scale inside the clip: behind a convolution oneDNN
/// 2.6 gives wrong results for a second linear function.
std::vector<ElementFunction> hardSigmoid(const format::Activation& activation)
{
    const float scale = activation.scale();
    const float atZero = activation.shift();
    const float atOne = scale + atZero;
    return {{algorithm::eltwise_linear, scale * activation.alpha(), scale * activation.beta() + atZero},
        {algorithm::eltwise_clip, std::min(atZero, atOne), std::max(atZero, atOne)}};
}

} // namespace

std::vector<ElementFunction> elementFunctions(const format::Activation* activation)
{
    if (activation && activation->kind() == ActivationKind::HardSigmoid) {
        return hardSigmoid(*activation);
    }
    std::vector<ElementFunction> functions = plainFunctions(activation);
    if (activation && (activation->scale() != 1.0F || activation->shift() != 0.0F)) {
        functions.push_back({algorithm::eltwise_linear, activation->scale(), activation->shift()});
    }
    return functions;
}

void appendActivation(dnnl::primitive_attr* attributes, const format::Activation* activation)
{
    dnnl::post_ops operations;
    for (const ElementFunction& function : elementFunctions(activation)) {
        operations.append_eltwise(1.0F, function.algorithm, function.alpha, function.beta);
    }
    attributes->set_post_ops(operations);
}

void addActivation(PlanBuilder& plan, const format::Operation& operation)
{
    Operand operand = plan.operand(plan.input(0));
    for (const ElementFunction& function : elementFunctions(operation.kind_as_Activation())) {
        const dnnl::eltwise_forward::desc kind(
            dnnl::prop_kind::forward_inference, function.algorithm, operand.layout, function.alpha, function.beta);
        const dnnl::eltwise_forward::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
        const Operand result = plan.result(plan.output(0), operand.layout);
        plan.addPrimitive(dnnl::eltwise_forward(description), description.scratchpad_desc(),
            {{DNNL_ARG_SRC, operand.buffer, operand.layout}, {DNNL_ARG_DST, result.buffer, result.layout}});
        operand = result;
    }
    plan.setResult(plan.output(0), operand);
}

} // namespace scribo::cpu
