#pragma once

#include "engine_generated.h"

#include <cstdint>
#include <vector>

namespace scribo::tool {

/// The multiplications, each with its addition, that `operation` takes by the plain mathematics of
/// it, for tensors of these `shapes`. Counted are convolutions, recurrent layers and products of
/// matrices; beside them the rest does not weigh.
std::int64_t multiplyAdds(const format::Operation& operation, const std::vector<std::vector<std::int64_t>>& shapes);

} // namespace scribo::tool
