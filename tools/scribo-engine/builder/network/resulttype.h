#pragma once

#include "engine_generated.h"

#include <optional>
#include <string>

namespace scribo::builder {

/// The element type of what `operation` gives for its inputs in `network`; nothing, with the reason
/// in `error`, when it cannot work on inputs of their types.
std::optional<format::ElementType> resultType(
    const format::NetworkT& network, const format::OperationT& operation, std::string* error);

} // namespace scribo::builder
