#pragma once

#include "result.h"

#include "engine_generated.h"

namespace scribo::builder {

/// The element type of what `operation` gives for its inputs in `network`; an error when it cannot work on inputs of
/// their types.
Result<format::ElementType> resultType(const format::NetworkT& network, const format::OperationT& operation);

} // namespace scribo::builder
