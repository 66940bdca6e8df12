#include "onnxmodel.h"

#include <climits>

namespace scribo::builder {

Result<onnx::ModelProto> parseModel(const void* bytes, std::size_t size)
{
    if (size == 0) {
        return failure("the file is empty");
    }
    if (size > INT_MAX) {
        return failure("the file is larger than 2 GB, the most that an ONNX file can hold");
    }
    onnx::ModelProto model;
    if (!model.ParseFromArray(bytes, static_cast<int>(size))) {
        return failure("this is not an ONNX model, or it is damaged");
    }
    if (!model.has_graph() || model.graph().node_size() == 0) {
        return failure("this is not an ONNX model: it holds no operations");
    }
    return model;
}

Result<int> operationSet(const onnx::ModelProto& model)
{
    for (const onnx::OperatorSetIdProto& set : model.opset_import()) {
        if (!set.domain().empty() && set.domain() != "ai.onnx") {
            continue;
        }
        if (set.version() >= oldestOpset && set.version() <= newestOpset) {
            return static_cast<int>(set.version());
        }
        return failure("the model is written for opset " + std::to_string(set.version()) + "; opsets "
            + std::to_string(oldestOpset) + " to " + std::to_string(newestOpset) + " are supported");
    }
    return failure("the model does not say which opset it is written for");
}

} // namespace scribo::builder
