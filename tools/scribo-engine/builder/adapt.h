#pragma once

#include "buildoptions.h"
#include "faults.h"

#include "engine_generated.h"

namespace scribo::builder {

/// Lets `network` take pictures as they are handed over: in the weights of its first convolutions
/// where that gives the same, otherwise in a convolution of 1 x 1 in front. An error
/// when the options do not fit the network.
Result<void> adaptPicture(format::NetworkT& network, const PictureOptions& options);

/// Lets `network` give its scores as a detector reads them, at every width of `widths`. There is
/// a fault for every output that the options do not fit.
Checked<void> adaptScores(format::NetworkT& network, const ScoreOptions& options, const WidthRange& widths);

} // namespace scribo::builder
