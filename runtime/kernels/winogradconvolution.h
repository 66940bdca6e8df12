#pragma once

#include "operations.h"

namespace scribo::cpu {

/// Adds the current operation, a convolution, in Winograd's form (see winograd.h). False, with nothing added, where the
/// form does not fit or does not pay. `preferred` is the layout that the plain form would give its result.
bool addWinogradConvolution(PlanBuilder& plan, const format::Convolution& convolution, const Layout& preferred);

} // namespace scribo::cpu
