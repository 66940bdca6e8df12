#pragma once

#include "value.h"

#include <cstdint>
#include <string>
#include <vector>

namespace scribo::cpu {

/// What every tensor of a network is when its input is `width` columns wide: `values` gets one entry
/// per tensor, in the order of the network's tensors. False, with a sentence in `error` that names
/// the operation, when the network cannot be run at that width. The width's place in the network's
/// range is not looked at. The network must have passed format::checkNetwork().
bool inferValues(const format::Network& network, int width, std::vector<Value>* values, std::string* error);

/// The same for a network that nobody has checked yet, and only the shapes; a tensor that no
/// operation touches has an empty one.
bool inferShapes(
    const format::Network& network, int width, std::vector<std::vector<std::int64_t>>* shapes, std::string* error);

} // namespace scribo::cpu
