#pragma once

#include "result.h"
#include "value.h"

#include <vector>

namespace scribo::cpu {

/// What every tensor of a network is when its input is `width` columns wide: one entry per tensor, in
/// the order of the network's tensors. An error, which names the operation, when the network cannot be
/// run at that width. The width's place in the network's range is not looked at. The network must
/// have passed checkNetwork().
Result<std::vector<Value>> inferValues(const format::Network& network, int width);

/// The same for a network that nobody has checked yet, and only the shapes; a tensor that no
/// operation touches has an empty one.
Result<std::vector<Shape>> inferShapes(const format::Network& network, int width);

} // namespace scribo::cpu
