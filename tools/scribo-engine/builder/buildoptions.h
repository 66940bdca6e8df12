#pragma once

#include "widthprofile.h"

#include <string>
#include <vector>

namespace scribo::builder {

/// The widest picture that an engine can be made for.
constexpr int largestWidth = 4096;

/// The channels that a network was trained on. Pictures are handed over as red, green, blue.
enum class Channels { Rgb, Bgr, Grey };

/// The values that a network was trained to take for black and for white.
struct ValueRange
{
    float black = -1;
    float white = 1;
};

/// What the network expects of a picture. The defaults are how pictures are handed over: planes of red, green and blue,
/// black as -1 and white as 1.
struct PictureOptions
{
    /// The height for a model that leaves it open; 0 where it does not.
    int height = 0;
    Channels channels = Channels::Rgb;
    /// One range for all channels, or one for each in the network's order.
    std::vector<ValueRange> ranges = {ValueRange()};
};

/// How the network gives its scores. The defaults are how the detector reads them: steps x batch x classes, the blank
/// is class 0, and the scores of each step add up to 1.
struct ScoreOptions
{
    /// The order of the axes: t for steps, n for batch, k for classes.
    std::string layout = "tnk";
    bool blankLast = false;
    /// Whether the network leaves the soft-max out, so that it has to be added.
    bool needsSoftmax = false;
};

struct BuildOptions
{
    WidthRange widths;
    /// The name of the ONNX file, kept in the engine for inspection.
    std::string source;
    PictureOptions picture = {};
    ScoreOptions scores = {};
};

} // namespace scribo::builder
