#include "planbuilder.h"

#include "format/network.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

std::size_t position(int tensor)
{
    return static_cast<std::size_t>(tensor);
}

std::size_t floatBytes(const Shape& shape)
{
    return static_cast<std::size_t>(countElements(shape)) * sizeof(float);
}

} // namespace

PlanBuilder::PlanBuilder(Model& model, std::vector<Value> values, int width, std::size_t maximumFixed)
    : model(model)
    , values(std::move(values))
    , maximumFixed(maximumFixed)
    , plan(new Plan)
    , stream(this->model.engine())
    , wanted(this->values.size(), false)
    , bindingBuffers(this->values.size(), -1)
    , places(this->values.size())
{
    plan->columns = width;
}

std::unique_ptr<Plan> PlanBuilder::build(AddOperation add)
{
    findWanted();
    placeBindings();
    const auto& operations = *model.network().operations();
    for (current = 0; current < static_cast<int>(operations.size()); ++current) {
        if (isNeeded(operation())) {
            folding = allOperandsFixed(operation());
            add(*this, operation());
        }
    }
    folding = false;
    finishOutputs();
    plan->arenaBytes = arrangeArena(&plan->buffers);
    return std::move(plan);
}

const format::Operation& PlanBuilder::operation() const
{
    return *model.network().operations()->Get(static_cast<flatbuffers::uoffset_t>(current));
}

std::string PlanBuilder::operationTitle() const
{
    const bool inside = current < static_cast<int>(model.network().operations()->size());
    return inside ? format::operationTitle(operation()) : "the outputs";
}

int PlanBuilder::input(std::size_t i) const
{
    const auto& inputs = *operation().inputs();
    return i < inputs.size() ? inputs.Get(static_cast<flatbuffers::uoffset_t>(i)) : -1;
}

int PlanBuilder::output(std::size_t i) const
{
    const auto& outputs = *operation().outputs();
    return i < outputs.size() ? outputs.Get(static_cast<flatbuffers::uoffset_t>(i)) : -1;
}

bool PlanBuilder::isRead(std::size_t i) const
{
    return output(i) >= 0 && wanted[position(output(i))];
}

bool PlanBuilder::mayDiffer(std::size_t i) const
{
    return input(i) >= 0 && value(input(i)).uniform.value_or(1.0F) != 0.0F;
}

const float* PlanBuilder::constant(int tensor) const
{
    const auto* bytes = model.network().tensors()->Get(static_cast<flatbuffers::uoffset_t>(tensor))->constant();
    return bytes ? reinterpret_cast<const float*>(bytes->data()) : nullptr;
}

/// Whether input `i` is an initial state of zeros, which a recurrent layer does without.
bool PlanBuilder::isDropped(const format::Operation& node, std::size_t i) const
{
    const int tensor = node.inputs()->Get(static_cast<flatbuffers::uoffset_t>(i));
    return node.kind_type() == format::OperationKind::Recurrent && i >= 4
        && values[position(tensor)].uniform.value_or(1.0F) == 0.0F;
}

bool PlanBuilder::isNeeded(const format::Operation& node) const
{
    return std::any_of(node.outputs()->begin(), node.outputs()->end(), [this](int tensor) {
        return tensor >= 0 && wanted[position(tensor)] && !values[position(tensor)].isInteger();
    });
}

/// From the outputs backwards: what nobody reads is not worked out.
void PlanBuilder::findWanted()
{
    for (const Binding& binding : model.bindings()) {
        wanted[position(binding.tensor)] = true;
    }
    const auto& operations = *model.network().operations();
    for (std::size_t index = operations.size(); index-- > 0;) {
        const format::Operation& node = *operations.Get(static_cast<flatbuffers::uoffset_t>(index));
        if (!isNeeded(node)) {
            continue;
        }
        for (std::size_t i = 0; i < node.inputs()->size(); ++i) {
            const int tensor = node.inputs()->Get(static_cast<flatbuffers::uoffset_t>(i));
            if (tensor >= 0 && !isDropped(node, i)) {
                wanted[position(tensor)] = true;
            }
        }
    }
}

void PlanBuilder::placeBindings()
{
    for (const Binding& binding : model.bindings()) {
        const Shape& extents = shape(binding.tensor);
        Buffer buffer;
        buffer.kind = Buffer::Kind::Binding;
        buffer.size = floatBytes(extents);
        buffer.binding = static_cast<int>(plan->shapes.size());
        bindingBuffers[position(binding.tensor)] = addBuffer(buffer);
        plan->shapes.push_back(extents);
    }
    const int input = model.bindings().front().tensor;
    places[position(input)] = {{bindingBuffers[position(input)], plainLayout(shape(input))}};
}

void PlanBuilder::placeConstant(int tensor)
{
    Buffer buffer;
    buffer.kind = Buffer::Kind::Fixed;
    buffer.size = floatBytes(shape(tensor));
    buffer.fixed = constant(tensor);
    places[position(tensor)] = {{addBuffer(buffer), plainLayout(shape(tensor))}};
}

bool PlanBuilder::isFixed(BufferId buffer) const
{
    return plan->buffers[static_cast<std::size_t>(buffer)].kind == Buffer::Kind::Fixed;
}

/// Whether everything that `node` reads is known already: constants, integers, earlier results.
bool PlanBuilder::allOperandsFixed(const format::Operation& node) const
{
    return std::all_of(node.inputs()->begin(), node.inputs()->end(), [this](int tensor) {
        if (tensor < 0 || values[position(tensor)].isInteger() || constant(tensor)) {
            return true;
        }
        const std::vector<Operand>& known = places[position(tensor)];
        return known.empty() || isFixed(known.front().buffer);
    });
}

BufferId PlanBuilder::addBuffer(const Buffer& buffer)
{
    plan->buffers.push_back(buffer);
    return static_cast<BufferId>(plan->buffers.size()) - 1;
}

/// Memory for a value: for good, or in the arena.
BufferId PlanBuilder::addRoom(std::size_t size, bool fixed)
{
    Buffer buffer;
    buffer.size = size;
    if (fixed) {
        if (plan->fixedSize() + size > maximumFixed) {
            throw std::bad_alloc();
        }
        buffer.kind = Buffer::Kind::Fixed;
        buffer.fixed = plan->fixed.emplace_back(size).data();
    }
    return addBuffer(buffer);
}

Operand PlanBuilder::operand(int tensor)
{
    std::vector<Operand>& known = places[position(tensor)];
    if (known.empty()) {
        placeConstant(tensor);
    }
    return known.front();
}

Operand PlanBuilder::operand(int tensor, const Layout& layout)
{
    const Operand first = operand(tensor);
    const bool plain = isPlain(layout);
    for (const Operand& known : places[position(tensor)]) {
        // Along an axis of one element any stride is as good as the other.
        if (known.layout == layout || (plain && isPlain(known.layout))) {
            return {known.buffer, layout};
        }
    }
    const Operand copy{addRoom(layout.get_size(), isFixed(first.buffer)), layout};
    addReorder(first, copy);
    places[position(tensor)].push_back(copy);
    return copy;
}

Operand PlanBuilder::plainOperand(int tensor)
{
    return operand(tensor, plainLayout(shape(tensor)));
}

Operand PlanBuilder::result(int tensor, const Layout& layout)
{
    const BufferId bound = bindingBuffers[position(tensor)];
    const bool direct = !folding && bound >= 0 && isPlain(layout);
    const Operand made{direct ? bound : addRoom(layout.get_size(), folding), layout};
    setResult(tensor, made);
    return made;
}

Operand PlanBuilder::plainResult(int tensor)
{
    return result(tensor, plainLayout(shape(tensor)));
}

void PlanBuilder::setResult(int tensor, const Operand& operand)
{
    places[position(tensor)] = {operand};
}

BufferId PlanBuilder::scratch(std::size_t size)
{
    return addRoom(size, folding);
}

BufferId PlanBuilder::zeros(std::int64_t count)
{
    const BufferId room = addRoom(static_cast<std::size_t>(count) * sizeof(float), true);
    std::fill_n(plan->fixed.back().floats(), count, 0.0F);
    return room;
}

dnnl::memory PlanBuilder::weights(int role, const Layout& layout, const std::function<Weights()>& make)
{
    return model.weights().get({current, role}, layout, engine(), make);
}

dnnl::primitive_attr PlanBuilder::attributes()
{
    dnnl::primitive_attr attributes;
    // Scratchpads lie in the arena, where they cost nothing while others use the room.
    attributes.set_scratchpad_mode(dnnl::scratchpad_mode::user);
    return attributes;
}

void PlanBuilder::addPrimitive(const dnnl::primitive& primitive, const Layout& scratchpad,
    std::vector<Argument> arguments, std::unordered_map<int, dnnl::memory> fixed)
{
    const bool known = std::all_of(
        arguments.begin(), arguments.end(), [this](const Argument& argument) { return isFixed(argument.buffer); });
    if (scratchpad.get_size() > 0) {
        arguments.push_back({DNNL_ARG_SCRATCHPAD, addRoom(scratchpad.get_size(), known), scratchpad});
    }
    std::vector<BufferId> used(arguments.size());
    std::transform(
        arguments.begin(), arguments.end(), used.begin(), [](const Argument& argument) { return argument.buffer; });
    addStep(std::make_unique<PrimitiveStep>(primitive, std::move(arguments), std::move(fixed), engine()), used);
}

void PlanBuilder::addKernel(std::vector<BufferId> buffers, int parts, KernelStep::Kernel kernel)
{
    const std::vector<BufferId> used = buffers;
    addStep(std::make_unique<KernelStep>(std::move(buffers), parts, std::move(kernel)), used);
}

void PlanBuilder::addKernel(std::vector<BufferId> buffers, std::function<void(float* const* operands)> kernel)
{
    addKernel(std::move(buffers), 1, [kernel = std::move(kernel)](float* const* operands, int) { kernel(operands); });
}

void PlanBuilder::addReorder(const Operand& from, const Operand& to)
{
    const dnnl::reorder::primitive_desc description(engine(), from.layout, engine(), to.layout, attributes());
    addPrimitive(dnnl::reorder(description), description.scratchpad_desc(),
        {{DNNL_ARG_FROM, from.buffer, from.layout}, {DNNL_ARG_TO, to.buffer, to.layout}});
}

/// A step whose operands are all known is carried out at once and not kept.
void PlanBuilder::addStep(std::unique_ptr<Step> step, const std::vector<BufferId>& used)
{
    if (std::all_of(used.begin(), used.end(), [this](BufferId buffer) { return isFixed(buffer); })) {
        step->bind(Addresses(plan->buffers, nullptr, nullptr));
        step->run(stream, Crew());
        stream.wait();
        return;
    }
    const int index = static_cast<int>(plan->steps.size());
    for (BufferId id : used) {
        Buffer& buffer = plan->buffers[static_cast<std::size_t>(id)];
        buffer.firstStep = buffer.firstStep < 0 ? index : buffer.firstStep;
        buffer.lastStep = index;
    }
    plan->steps.push_back({std::move(step), current});
}

/// What did not end up in its binding when it was made is copied there.
void PlanBuilder::finishOutputs()
{
    for (std::size_t i = 1; i < model.bindings().size(); ++i) {
        const int tensor = model.bindings()[i].tensor;
        const BufferId bound = bindingBuffers[position(tensor)];
        const Operand place = operand(tensor);
        if (place.buffer != bound) {
            addReorder(place, {bound, plainLayout(shape(tensor))});
        }
    }
}

} // namespace scribo::cpu
