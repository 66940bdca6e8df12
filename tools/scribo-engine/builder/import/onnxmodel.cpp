#include "onnxmodel.h"

#include <climits>

namespace scribo::builder {

bool parseModel(const void* bytes, std::size_t size, onnx::ModelProto* model, std::string* error)
{
    if (size == 0) {
        *error = "the file is empty";
        return false;
    }
    if (size > INT_MAX) {
        *error = "the file is larger than 2 GB, the most that an ONNX file can hold";
        return false;
    }
    if (!model->ParseFromArray(bytes, static_cast<int>(size))) {
        *error = "this is not an ONNX model, or it is damaged";
        return false;
    }
    if (!model->has_graph() || model->graph().node_size() == 0) {
        *error = "this is not an ONNX model: it holds no operations";
        return false;
    }
    return true;
}

int operationSet(const onnx::ModelProto& model, std::string* error)
{
    for (const onnx::OperatorSetIdProto& set : model.opset_import()) {
        if (!set.domain().empty() && set.domain() != "ai.onnx") {
            continue;
        }
        if (set.version() >= oldestOpset && set.version() <= newestOpset) {
            return static_cast<int>(set.version());
        }
        *error = "the model is written for opset " + std::to_string(set.version()) + "; opsets "
            + std::to_string(oldestOpset) + " to " + std::to_string(newestOpset) + " are supported";
        return 0;
    }
    *error = "the model does not say which opset it is written for";
    return 0;
}

} // namespace scribo::builder
