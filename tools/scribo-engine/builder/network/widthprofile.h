#pragma once

#include "tensordata.h"

#include <string>
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
/// False, with the width and the reason in `error`, when it cannot be run at one.
bool profileNetwork(const format::NetworkT& network, const WidthRange& range, Profile* profile, std::string* error);

} // namespace scribo::builder
