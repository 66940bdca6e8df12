#pragma once

#include "tensordata.h"

#include <onnx/onnx_pb.h>

namespace scribo::builder {

/// The constant in `proto`. Floats of every width become 32-bit floats; integers and truth values
/// become 64-bit integers. False, with the reason in `error`, for other types, data kept outside
/// the file, and data that does not fill the tensor exactly.
bool readTensor(const onnx::TensorProto& proto, TensorT* tensor, std::string* error);

/// What a tensor of ONNX's type `dataType` is in an engine; false when it has no place there.
bool elementType(int dataType, format::ElementType* type);

} // namespace scribo::builder
