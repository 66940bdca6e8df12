#pragma once

#include "faults.h"

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace scribo::builder {

/// A node of an ONNX graph, and the attributes that an importer asked it for. An attribute that nobody asks for would
/// be ignored in silence, so it is a fault.
class OnnxNode
{
public:
    /// `faults` is where the node says why it cannot be imported. `proto` and `faults` must outlive the node.
    OnnxNode(const onnx::NodeProto& proto, Faults& faults);

    const std::string& operation() const { return proto.op_type(); }
    const std::string& domain() const { return proto.domain(); }
    /// The node's name, or its first output's where it has none.
    const std::string& name() const;
    int inputCount() const { return proto.input_size(); }
    int outputCount() const { return proto.output_size(); }
    /// Empty for an input or output that is absent or left out.
    std::string input(int position) const;
    std::string output(int position) const;

    bool has(const char* attribute) const { return find(attribute, nullptr) != nullptr; }
    /// The attribute, or `fallback` where it is absent. Another type than the one asked for is a fault.
    std::int64_t integer(const char* attribute, std::int64_t fallback) const;
    float real(const char* attribute, float fallback) const;
    std::string text(const char* attribute, const std::string& fallback) const;
    std::vector<std::int64_t> integers(const char* attribute, const std::vector<std::int64_t>& fallback) const;
    std::vector<float> reals(const char* attribute) const;
    std::vector<std::string> texts(const char* attribute) const;
    /// An integer that counts axes, from the front or, negative, from the back. One that no tensor
    /// has is a fault.
    int axis(const char* attribute, int fallback) const;
    /// Null where it is absent.
    const onnx::GraphProto* graph(const char* attribute) const;
    /// Null where it is absent.
    const onnx::TensorProto* tensor(const char* attribute) const;
    /// Says that an attribute is known and does not change the result.
    void ignore(const char* attribute) const { asked.insert(attribute); }

    /// Adds the fault that this node cannot be imported because of `reason`.
    void refuse(const std::string& reason) const;
    /// Refuses every attribute that was not asked for.
    void refuseUnasked() const;

private:
    const onnx::AttributeProto* find(const char* attribute, const onnx::AttributeProto_AttributeType* type) const;

    const onnx::NodeProto& proto;
    Faults& faults;
    mutable std::set<std::string> asked;
};

} // namespace scribo::builder
