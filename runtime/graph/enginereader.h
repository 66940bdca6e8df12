#pragma once

#include "result.h"

#include "engine_generated.h"

#include <cstddef>

namespace scribo::cpu {

/// The network in `size` bytes of an engine file from outside, of which everything is verified that
/// format::openEngine() and checkNetwork() look at. It points into `bytes`, which must be 64-byte aligned and outlive
/// it. Shapes are the planner's business.
Result<const format::Network*> readEngine(const void* bytes, std::size_t size);

} // namespace scribo::cpu
