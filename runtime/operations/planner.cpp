#include "planner.h"

#include "operations.h"

#include "graph/shapes.h"
#include "kernels/processor.h"

namespace scribo::cpu {

namespace {

/// Has oneDNN keep to the instruction sets that SCRIBO_ISA allows. That works only before its first primitive.
bool limitOneDnn()
{
    switch (allowedInstructionSet()) {
    case InstructionSet::Base:
        return dnnl::set_max_cpu_isa(dnnl::cpu_isa::sse41) == dnnl::status::success;
    case InstructionSet::Avx2:
        return dnnl::set_max_cpu_isa(dnnl::cpu_isa::avx2) == dnnl::status::success;
    case InstructionSet::Avx512:
        break;
    }
    return true;
}

/// Adds the steps of an operation whose shapes are known.
void addOperation(PlanBuilder& plan, const format::Operation& operation)
{
    format::rowOf(planOperations, operation.kind_type()).add(plan, operation);
}

} // namespace

Result<std::unique_ptr<Plan>> makePlan(Model& model, int width)
{
    [[maybe_unused]] static const bool limited = limitOneDnn();
    Result<std::vector<Value>> values = inferValues(model.network(), width);
    if (!values) {
        return tl::unexpected(values.error());
    }
    PlanBuilder builder(model, std::move(*values), width, maximumPlanBytes);
    try {
        std::unique_ptr<Plan> plan = builder.build(addOperation);
        if (plan->arenaSize() + plan->fixedSize() > maximumPlanBytes) {
            return failure("a width of " + std::to_string(width) + " needs "
                + std::to_string(plan->arenaSize() + plan->fixedSize()) + " bytes of working memory");
        }
        return plan;
    } catch (const dnnl::error& fault) {
        return failure(builder.operationTitle() + ": " + fault.what());
    }
}

} // namespace scribo::cpu
