#pragma once

#include "buildoptions.h"
#include "onnxnode.h"

namespace scribo::builder {

/// Lets `network` take pictures as they are handed over: in the weights of its first convolutions
/// where that gives the same, otherwise in a convolution of 1 x 1 in front. False, with what does not
/// fit in `problems`.
bool adaptPicture(format::NetworkT& network, const PictureOptions& options, Problems* problems);

/// Lets `network` give its scores as a detector reads them, at every width of `widths`. False, with
/// what does not fit in `problems`.
bool adaptScores(format::NetworkT& network, const ScoreOptions& options, const WidthRange& widths, Problems* problems);

} // namespace scribo::builder
