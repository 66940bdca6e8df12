#pragma once

#include "operations.h"

namespace scribo::cpu {

/// Adds the current operation, a convolution, in Winograd's form (see winograd.h). False, with nothing added, where the
/// form does not fit or does not pay.
bool addWinogradConvolution(PlanBuilder& plan, const format::Convolution& convolution);

} // namespace scribo::cpu
