#pragma once

#include "align/patchlevel.h"
#include "align/placement.h"

namespace scribo::line {

/// How well a patch fits a place of a picture.
struct Fit
{
    Placement placement;
    double score = 0; ///< normalised correlation over the visible pixels, -1 to 1
    double visible = 0; ///< the part of the patch's pixels that lie in the picture, 0 to 1
};

/// A picture's contrast counts as at least this much of the patch's. It keeps flat places from being divided by
/// nothing, and faint ones from being found.
constexpr double leastContrast = 0.2;

/// Moves (and, unless `turns` is false, turns) the patch from `start` until it fits best: least squares with a free
/// gain and offset of the light, which is the same as the highest normalised correlation. Converges from about a pixel
/// away. `picture`: 8 bits, grey, the same level as the patch's. Gives the best of the at most `steps` places that were
/// tried.
Fit fitPatch(const PatchLevel& patch, const cv::Mat& picture, const Placement& start, bool turns, int steps);

/// The same from a fit that has converged, without the pixels that differ much from what the patch and the light there
/// explain: glare and dirt do not pull at it. The score is still that of all visible pixels, so that nothing which
/// hides the patch goes unnoticed.
Fit fitWithoutOutliers(const PatchLevel& patch, const cv::Mat& picture, const Fit& start, bool turns, int steps);

} // namespace scribo::line
