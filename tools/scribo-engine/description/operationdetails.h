#pragma once

#include "engine_generated.h"

#include <QString>

namespace scribo::tool {

/// The attributes of an operation that differ from the plain case, in a few words: "stride 2 1, Relu".
QString operationDetails(const format::Operation& operation);

} // namespace scribo::tool
