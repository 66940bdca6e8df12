#pragma once

#include <cstdint>

/// What the detector demands of the network in every model package.
namespace modellimits {

/// Columns of the narrowest picture that is handed to a network, unless the network's own width is smaller still.
/// Narrower regions are stretched.
constexpr std::int32_t narrowestWidth = 32;

/// Planes of the picture that is handed to a network: red, green and blue, whatever the region's picture has.
constexpr std::int32_t pictureChannels = 3;

/// A score up to this never wins a time step, however low the others are.
constexpr double scoreFloor = 0.1;

/// The suffix of engine files: the one type of engine that there is a detector for.
constexpr char engineType[] = "trt";

} // namespace modellimits
