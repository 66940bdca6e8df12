#pragma once

#include "result.h"
#include "tensordata.h"

#include <onnx/onnx_pb.h>

#include <optional>

namespace scribo::builder {

/// The constant in `proto`. Floats of every width become 32-bit floats; integers and truth values
/// become 64-bit integers. An error for other types, data kept outside the file, and data that does
/// not fill the tensor exactly.
Result<TensorT> readTensor(const onnx::TensorProto& proto);

/// What a tensor of ONNX's type `dataType` is in an engine; nothing when it has no place there.
std::optional<format::ElementType> elementType(int dataType);

} // namespace scribo::builder
