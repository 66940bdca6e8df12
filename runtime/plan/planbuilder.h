#pragma once

#include "layout.h"
#include "model.h"
#include "plan.h"

#include <memory>
#include <string>
#include <vector>

namespace scribo::cpu {

/// A value in a buffer, in some layout.
struct Operand
{
    BufferId buffer = -1;
    Layout layout;
};

class PlanBuilder;
/// Adds the steps of an operation, whose shapes are known, to a plan.
using AddOperation = void (*)(PlanBuilder& plan, const format::Operation& operation);

/// A plan in the making: what the files in operations/ turn operations with. Walks through the
/// operations in order; keeps where each tensor lies and in which layouts; puts reorders between
/// operations that want different ones. Operations whose operands are all known already are carried
/// out at once, and only their results go into the plan.
class PlanBuilder
{
public:
    /// `values`: of every tensor at a width of `width`. Values that are worked out once may take `maximumFixed` bytes.
    PlanBuilder(Model& model, std::vector<Value> values, int width, std::size_t maximumFixed);

    /// The finished plan, of what `add` gives for every operation that is needed. Throws dnnl::error and
    /// std::bad_alloc; operationTitle() then says where.
    std::unique_ptr<Plan> build(AddOperation add);
    std::string operationTitle() const;

    const dnnl::engine& engine() const { return model.engine(); }
    const std::vector<Value>& allValues() const { return values; }

    /// The tensor that is input or output `i` of the current operation; -1 when it is absent.
    int input(std::size_t i) const;
    int output(std::size_t i) const;
    /// Whether anything reads output `i`.
    bool isRead(std::size_t i) const;
    /// Whether input `i` is there and is not known to be all zeros.
    bool mayDiffer(std::size_t i) const;

    const Shape& shape(int tensor) const { return values[static_cast<std::size_t>(tensor)].shape; }
    const Value& value(int tensor) const { return values[static_cast<std::size_t>(tensor)]; }
    /// The floats of a constant.
    const float* constant(int tensor) const;

    /// The tensor as it lies, or in a wanted layout, reordered if it must be.
    Operand operand(int tensor);
    Operand operand(int tensor, const Layout& layout);
    Operand plainOperand(int tensor);

    /// Room for a result that a step of the current operation writes in `layout`.
    Operand result(int tensor, const Layout& layout);
    Operand plainResult(int tensor);
    /// The tensor is what lies at `operand` already.
    void setResult(int tensor, const Operand& operand);
    /// Room that is needed only within the current operation.
    BufferId scratch(std::size_t size);
    /// As many zeros, for good.
    BufferId zeros(std::int64_t count);

    /// Weights of the current operation in `layout`; see WeightStore.
    dnnl::memory weights(int role, const Layout& layout, const std::function<Weights()>& make);

    using Argument = PrimitiveStep::Argument;
    /// Adds a primitive that works with a scratchpad of layout `scratchpad`.
    void addPrimitive(const dnnl::primitive& primitive, const Layout& scratchpad, std::vector<Argument> arguments,
        std::unordered_map<int, dnnl::memory> fixed = {});
    /// Adds a kernel on `buffers` that works in `parts` parts.
    void addKernel(std::vector<BufferId> buffers, int parts, KernelStep::Kernel kernel);
    /// Adds a kernel of one part.
    void addKernel(std::vector<BufferId> buffers, std::function<void(float* const* operands)> kernel);
    /// The attributes that every primitive of a plan has.
    static dnnl::primitive_attr attributes();

private:
    const format::Operation& operation() const;
    bool isNeeded(const format::Operation& node) const;
    bool isDropped(const format::Operation& node, std::size_t i) const;
    void findWanted();
    void placeBindings();
    void placeConstant(int tensor);
    bool allOperandsFixed(const format::Operation& node) const;
    bool isFixed(BufferId buffer) const;
    BufferId addBuffer(const Buffer& buffer);
    BufferId addRoom(std::size_t size, bool fixed);
    void addReorder(const Operand& from, const Operand& to);
    void addStep(std::unique_ptr<Step> step, const std::vector<BufferId>& used);
    void finishOutputs();

    Model& model;
    std::vector<Value> values;
    std::size_t maximumFixed;
    std::unique_ptr<Plan> plan;
    dnnl::stream stream;
    /// Per tensor: whether a step needs it; whether it is bound, and as which; where it lies, first
    /// as it was made.
    std::vector<bool> wanted;
    std::vector<BufferId> bindingBuffers;
    std::vector<std::vector<Operand>> places;

    int current = 0;
    /// Whether the current operation is carried out at once.
    bool folding = false;
};

} // namespace scribo::cpu
