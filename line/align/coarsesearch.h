#pragma once

#include "align/patchlevel.h"
#include "align/placement.h"

#include <vector>

namespace scribo::line {

/// A place where the patch may be.
struct Candidate
{
    Placement placement;
    double score = 0;
};

/// The places where the patch fits best, best first, at most `count`: normalised correlation at every pixel of `range`
/// and at every turn up to `turn` radians to either side, in steps that a fit can bridge.
/// `picture`: 8 bits, grey, the same level as the patch's. `range`: where the patch's centre may be, in its pixels.
std::vector<Candidate> coarseSearch(
    const PatchLevel& patch, const cv::Mat& picture, const cv::Rect2d& range, double turn, std::size_t count);

} // namespace scribo::line
