#include "onnxnode.h"

#include <utility>

namespace scribo::builder {

using onnx::AttributeProto;

OnnxNode::OnnxNode(const onnx::NodeProto& proto, Faults& faults)
    : proto(proto)
    , faults(faults)
{
}

const std::string& OnnxNode::name() const
{
    return proto.name().empty() && proto.output_size() > 0 ? proto.output(0) : proto.name();
}

std::string OnnxNode::input(int position) const
{
    return position < proto.input_size() ? proto.input(position) : std::string();
}

std::string OnnxNode::output(int position) const
{
    return position < proto.output_size() ? proto.output(position) : std::string();
}

const AttributeProto* OnnxNode::find(const char* attribute, const onnx::AttributeProto_AttributeType* type) const
{
    asked.insert(attribute);
    for (const AttributeProto& candidate : proto.attribute()) {
        if (candidate.name() != attribute) {
            continue;
        }
        if (type && candidate.type() != *type) {
            refuse("attribute '" + candidate.name() + "' is not of the type that it should be");
            return nullptr;
        }
        return &candidate;
    }
    return nullptr;
}

std::int64_t OnnxNode::integer(const char* attribute, std::int64_t fallback) const
{
    const auto type = AttributeProto::INT;
    const AttributeProto* found = find(attribute, &type);
    return found ? found->i() : fallback;
}

float OnnxNode::real(const char* attribute, float fallback) const
{
    const auto type = AttributeProto::FLOAT;
    const AttributeProto* found = find(attribute, &type);
    return found ? found->f() : fallback;
}

std::string OnnxNode::text(const char* attribute, const std::string& fallback) const
{
    const auto type = AttributeProto::STRING;
    const AttributeProto* found = find(attribute, &type);
    return found ? found->s() : fallback;
}

std::vector<std::int64_t> OnnxNode::integers(const char* attribute, const std::vector<std::int64_t>& fallback) const
{
    const auto type = AttributeProto::INTS;
    const AttributeProto* found = find(attribute, &type);
    return found ? std::vector<std::int64_t>(found->ints().begin(), found->ints().end()) : std::move(fallback);
}

std::vector<float> OnnxNode::reals(const char* attribute) const
{
    const auto type = AttributeProto::FLOATS;
    const AttributeProto* found = find(attribute, &type);
    return found ? std::vector<float>(found->floats().begin(), found->floats().end()) : std::vector<float>();
}

std::vector<std::string> OnnxNode::texts(const char* attribute) const
{
    const auto type = AttributeProto::STRINGS;
    const AttributeProto* found = find(attribute, &type);
    return found ? std::vector<std::string>(found->strings().begin(), found->strings().end())
                 : std::vector<std::string>();
}

int OnnxNode::axis(const char* attribute, int fallback) const
{
    constexpr std::int64_t mostAxes = 16;
    const std::int64_t value = integer(attribute, fallback);
    if (value < -mostAxes || value >= mostAxes) {
        refuse("attribute '" + std::string(attribute) + "' makes no sense");
        return fallback;
    }
    return static_cast<int>(value);
}

const onnx::GraphProto* OnnxNode::graph(const char* attribute) const
{
    const auto type = AttributeProto::GRAPH;
    const AttributeProto* found = find(attribute, &type);
    return found ? &found->g() : nullptr;
}

const onnx::TensorProto* OnnxNode::tensor(const char* attribute) const
{
    const auto type = AttributeProto::TENSOR;
    const AttributeProto* found = find(attribute, &type);
    return found ? &found->t() : nullptr;
}

void OnnxNode::refuse(const std::string& reason) const
{
    faults.push_back("operation '" + operation() + "' of node '" + name() + "': " + reason);
}

void OnnxNode::refuseUnasked() const
{
    for (const AttributeProto& attribute : proto.attribute()) {
        if (asked.count(attribute.name()) == 0) {
            refuse("attribute '" + attribute.name() + "' is not supported");
        }
    }
}

} // namespace scribo::builder
