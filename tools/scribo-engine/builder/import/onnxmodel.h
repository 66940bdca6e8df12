#pragma once

#include <onnx/onnx_pb.h>

#include <cstddef>
#include <string>

namespace scribo::builder {

/// The sets of ONNX operations that the importers know.
constexpr int oldestOpset = 7;
constexpr int newestOpset = 21;

/// Reads the `size` bytes of an ONNX file into `model`. False, with a sentence in `error`, for
/// anything that is not a whole model.
bool parseModel(const void* bytes, std::size_t size, onnx::ModelProto* model, std::string* error);

/// The version of the standard operations that the model was written for; 0, with a sentence in
/// `error`, when it is outside oldestOpset to newestOpset or not told.
int operationSet(const onnx::ModelProto& model, std::string* error);

} // namespace scribo::builder
