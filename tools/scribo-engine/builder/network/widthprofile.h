#pragma once

#include "result.h"
#include "tensordata.h"

#include <vector>

namespace scribo::builder {

/// The input widths that an engine is made for, both included.
struct WidthRange
{
    int minimum = 32;
    int maximum = 320;
};

/// What is known of a tensor over all widths of a range.
struct TensorProfile
{
    Extents extents; ///< -1 where the width decides; none for a single number
    /// The elements of an integer tensor that is the same at every width; none for others.
    std::vector<std::int64_t> integers;
};

/// The profile of every tensor, in the network's order.
using Profile = std::vector<TensorProfile>;

/// Works out the network at every width of `range`, so that what holds here holds for the engine.
/// The error names the first width at which it cannot be run, and the reason.
Result<Profile> profileNetwork(const format::NetworkT& network, const WidthRange& range);

} // namespace scribo::builder
