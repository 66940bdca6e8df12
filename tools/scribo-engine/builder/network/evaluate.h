#pragma once

#include "tensordata.h"

#include <optional>

namespace scribo::builder {

/// The output of `operation`, unnamed, when all its inputs are constants. Nothing when
/// - an input is not a constant, or the inputs do not fit the operation,
/// - the operation is not computed here, as those with several outputs,
/// - the output would be empty, or too large to be kept in a file.
std::optional<TensorT> evaluate(const format::NetworkT& network, const format::OperationT& operation);

} // namespace scribo::builder
