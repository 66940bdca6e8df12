#pragma once

#include "align/alignmentsettings.h"
#include "align/placement.h"

#include <opencv2/core/mat.hpp>
#include <vector>

namespace scribo::line {

/// `picture` as grey, a view of it when it is grey already. 8 bits, one or three channels (red, green, blue order).
cv::Mat greyPicture(const cv::Mat& picture);

/// `grey` and its halves, `levels` more of them; each pixel is the mean of four. Odd last rows and columns are left
/// out.
std::vector<cv::Mat> pyramid(const cv::Mat& grey, int levels);

/// The part of a picture in which the patch may be, as a pyramid, and where in it the patch's centre may be.
class SearchArea
{
public:
    /// `patch`: of the taught picture. `reach`: how far beyond the taught range to look, in pixels.
    SearchArea(const cv::Mat& picture, const QRect& patch, const AlignmentSettings& settings, double reach, int levels);

    /// No place of the patch within the range is in the picture.
    bool isEmpty() const { return centres.empty(); }
    const cv::Mat& level(int index) const { return pictures[static_cast<std::size_t>(index)]; }
    /// Where the patch's centre may be, in pixels of level 0 of the area.
    const cv::Rect2d& centreRange() const { return centres; }
    /// Where the area's upper left corner is in the picture.
    cv::Point2d origin() const { return corner; }

private:
    std::vector<cv::Mat> pictures;
    cv::Rect2d centres;
    cv::Point2d corner;
};

} // namespace scribo::line
