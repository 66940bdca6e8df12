#pragma once

#include <opencv2/core/matx.hpp>
#include <opencv2/core/types.hpp>

#include <cmath>

namespace scribo::line {

/// Where a patch may be in a level of an image pyramid.
struct Placement
{
    cv::Point2d centre; ///< of the patch, in pixels of the level from its upper left corner
    double angle = 0; ///< radians, clockwise on the screen

    /// The same place in a level that is `factor` times as large.
    Placement scaled(double factor) const { return {centre * factor, angle}; }

    /// What cv::warpAffine with WARP_INVERSE_MAP needs to cut a picture of `size` here, upright.
    cv::Matx23d cut(cv::Size size) const
    {
        const double cosine = std::cos(angle);
        const double sine = std::sin(angle);
        const double x = 0.5 - 0.5 * size.width;
        const double y = 0.5 - 0.5 * size.height;
        return {cosine, -sine, centre.x - 0.5 + cosine * x - sine * y, sine, cosine,
            centre.y - 0.5 + sine * x + cosine * y};
    }
};

} // namespace scribo::line
