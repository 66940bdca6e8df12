#pragma once

#include "result.h"

#include <onnx/onnx_pb.h>

#include <cstddef>

namespace scribo::builder {

/// The sets of ONNX operations that the importers know.
constexpr int oldestOpset = 7;
constexpr int newestOpset = 21;

/// The model in the `size` bytes of an ONNX file; an error for anything that is not a whole model.
Result<onnx::ModelProto> parseModel(const void* bytes, std::size_t size);

/// The version of the standard operations that the model was written for; an error when it is outside oldestOpset to
/// newestOpset, or when the model does not say.
Result<int> operationSet(const onnx::ModelProto& model);

} // namespace scribo::builder
