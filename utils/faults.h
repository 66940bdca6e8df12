#pragma once

#include "result.h"

#include <string>
#include <utility>
#include <vector>

namespace scribo {

/// Everything that keeps something from being done: one sentence for each fault, as in an Error.
using Faults = std::vector<std::string>;

/// A value, or the faults because of which there is none; then there is at least one.
template <class T>
using Checked = tl::expected<T, Faults>;

/// What a function that returns a Checked returns when it fails.
inline tl::unexpected<Faults> faulty(Faults faults)
{
    return tl::unexpected<Faults>(std::move(faults));
}
/// The same for a single fault.
inline tl::unexpected<Faults> faulty(const Error& error)
{
    return faulty(Faults{error.message});
}

} // namespace scribo
