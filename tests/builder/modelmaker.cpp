#include "modelmaker.h"

#include <cmath>

namespace {

onnx::AttributeProto& addAttribute(
    onnx::NodeProto& node, const std::string& name, onnx::AttributeProto_AttributeType type)
{
    onnx::AttributeProto& attribute = *node.add_attribute();
    attribute.set_name(name);
    attribute.set_type(type);
    return attribute;
}

/// Numbers between -1 and 1 that do not repeat.
std::vector<float> spreadNumbers(std::size_t count)
{
    std::vector<float> numbers;
    for (std::size_t i = 0; i < count; ++i) {
        numbers.push_back(std::sin(static_cast<float>(i) * 1.7f));
    }
    return numbers;
}

} // namespace

ModelMaker::ModelMaker(int opset)
{
    model.set_ir_version(7);
    model.add_opset_import()->set_version(opset);
    graph().add_input()->set_name("x");
    inputShape({1, 3, 8, -1});
    graph().add_output()->set_name("y");
}

onnx::NodeProto& ModelMaker::node(const std::string& operation, const std::vector<std::string>& inputs,
    const std::vector<std::string>& outputs, const std::string& name)
{
    onnx::NodeProto& node = *graph().add_node();
    node.set_op_type(operation);
    node.set_name(name);
    for (const std::string& input : inputs) {
        node.add_input(input);
    }
    for (const std::string& output : outputs) {
        node.add_output(output);
    }
    return node;
}

void ModelMaker::inputShape(const std::vector<std::int64_t>& extents)
{
    auto& type = *graph().mutable_input(0)->mutable_type()->mutable_tensor_type();
    type.set_elem_type(onnx::TensorProto::FLOAT);
    type.clear_shape();
    for (std::int64_t extent : extents) {
        auto& dim = *type.mutable_shape()->add_dim();
        if (extent < 0) {
            dim.set_dim_param("width");
        } else {
            dim.set_dim_value(extent);
        }
    }
}

void ModelMaker::constant(
    const std::string& name, const std::vector<std::int64_t>& dims, const std::vector<float>& values)
{
    onnx::TensorProto& tensor = *graph().add_initializer();
    tensor.set_name(name);
    tensor.set_data_type(onnx::TensorProto::FLOAT);
    tensor.mutable_dims()->Add(dims.begin(), dims.end());
    tensor.mutable_float_data()->Add(values.begin(), values.end());
}

void ModelMaker::integers(const std::string& name, const std::vector<std::int64_t>& values)
{
    onnx::TensorProto& tensor = *graph().add_initializer();
    tensor.set_name(name);
    tensor.set_data_type(onnx::TensorProto::INT64);
    tensor.add_dims(static_cast<std::int64_t>(values.size()));
    tensor.mutable_int64_data()->Add(values.begin(), values.end());
}

void setAttribute(onnx::NodeProto& node, const std::string& name, std::int64_t value)
{
    addAttribute(node, name, onnx::AttributeProto::INT).set_i(value);
}

void setAttribute(onnx::NodeProto& node, const std::string& name, float value)
{
    addAttribute(node, name, onnx::AttributeProto::FLOAT).set_f(value);
}

void setAttribute(onnx::NodeProto& node, const std::string& name, const char* value)
{
    addAttribute(node, name, onnx::AttributeProto::STRING).set_s(value);
}

void setAttribute(onnx::NodeProto& node, const std::string& name, const std::vector<std::int64_t>& values)
{
    addAttribute(node, name, onnx::AttributeProto::INTS).mutable_ints()->Add(values.begin(), values.end());
}

ModelMaker smallRecogniser(int classes)
{
    ModelMaker maker;
    maker.graph().mutable_input(0)->set_name("input");
    maker.graph().mutable_output(0)->set_name("output");
    maker.inputShape({1, 3, 32, -1});
    maker.constant("w", {classes, 3, 1, 1}, spreadNumbers(static_cast<std::size_t>(classes) * 3));
    maker.integers("axes", {2});
    onnx::NodeProto& pool = maker.node("AveragePool", {"input"}, {"pooled"});
    setAttribute(pool, "kernel_shape", std::vector<std::int64_t>{32, 4});
    setAttribute(pool, "strides", std::vector<std::int64_t>{32, 4});
    maker.node("Conv", {"pooled", "w"}, {"scores"});
    maker.node("Squeeze", {"scores", "axes"}, {"flat"});
    setAttribute(maker.node("Transpose", {"flat"}, {"steps"}), "perm", std::vector<std::int64_t>{2, 0, 1});
    setAttribute(maker.node("Softmax", {"steps"}, {"output"}), "axis", std::int64_t(2));
    return maker;
}
