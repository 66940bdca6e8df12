#pragma once

#include "buildoptions.h"
#include "faults.h"

#include "engine_generated.h"

namespace scribo::builder {

/// Makes `network` take pictures as they are handed over. Changes the weights of its first convolutions where that
/// gives the same result; otherwise adds a convolution of 1 x 1 in front. An error when the options do not fit the
/// network.
Result<void> adaptPicture(format::NetworkT& network, const PictureOptions& options);

/// Makes `network` give its scores as a detector reads them, at every width of `widths`. There is a fault for every
/// output that the options do not fit.
Checked<void> adaptScores(format::NetworkT& network, const ScoreOptions& options, const WidthRange& widths);

} // namespace scribo::builder
