#pragma once

#include <onnx/onnx_pb.h>

#include <cstdint>
#include <string>
#include <vector>

/// Puts ONNX models together for tests. A new one has the input 'x', 1 x 3 x 8 x width, and the
/// output 'y'; nodes come in the order in which they are added.
class ModelMaker
{
public:
    explicit ModelMaker(int opset = 13);

    onnx::ModelProto model;

    onnx::GraphProto& graph() { return *model.mutable_graph(); }
    onnx::NodeProto& node(const std::string& operation, const std::vector<std::string>& inputs,
        const std::vector<std::string>& outputs, const std::string& name = {});
    /// The extents of the input; -1 for a symbol.
    void inputShape(const std::vector<std::int64_t>& extents);
    void constant(const std::string& name, const std::vector<std::int64_t>& dims, const std::vector<float>& values);
    /// A list of integers.
    void integers(const std::string& name, const std::vector<std::int64_t>& values);

    std::string bytes() const { return model.SerializeAsString(); }
};

void setAttribute(onnx::NodeProto& node, const std::string& name, std::int64_t value);
void setAttribute(onnx::NodeProto& node, const std::string& name, float value);
void setAttribute(onnx::NodeProto& node, const std::string& name, const char* value);
void setAttribute(onnx::NodeProto& node, const std::string& name, const std::vector<std::int64_t>& values);

/// A recogniser in small: input 'input' 1 x 3 x 32 x width, output 'output' steps x 1 x classes with
/// steps = width / 4, soft-max scores.
ModelMaker smallRecogniser(int classes);
