#pragma once

#include "array.h"

namespace scribo::test {

/// What the network gives for `input`, worked out operation by operation with the definitions in
/// reference.h: the kinds of operations that smallCrnn() is made of.
std::vector<Array> interpret(const format::NetworkT& network, const Array& input);

} // namespace scribo::test
