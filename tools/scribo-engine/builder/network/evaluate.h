#pragma once

#include "tensordata.h"

#include <optional>

namespace scribo::builder {

/// The output of `operation`, unnamed, when all its inputs are constants; nothing when an input is
/// not, the operation is not one that is worked out here (none with several outputs is), its inputs
/// do not fit it, or the output would be empty or larger than what is worth keeping in a file.
std::optional<TensorT> evaluate(const format::NetworkT& network, const format::OperationT& operation);

} // namespace scribo::builder
