#pragma once

#include <QRectF>

#include <opencv2/core/types.hpp>

#include <optional>

/// An inspection region within a picture.
struct RegionCut
{
    QRectF inside; ///< clipped to the picture, in pixels; what boxes are moved by
    cv::Rect pixels; ///< the same in whole pixels, halves rounded to the even neighbour; what is cut out
};

/// Whether `region` is inspected at all: regions below one pixel in width or height are skipped.
bool isInspected(const QRectF& region);

/// The part of a picture of size `picture` that the inspection region `region` asks for.
///
/// Nothing for a region that is skipped, and for one that cannot be cut out because no whole pixel of it lies in the
/// picture or a coordinate is not a number. A left or upper edge outside the picture moves to the picture's edge, which
/// does not make the region smaller.
std::optional<RegionCut> cutRegion(const QRectF& region, const cv::Size& picture);

/// `region` in whole pixels, halves rounded to the even neighbour, wherever it lies: the box of a region that cannot be
/// cut out. Position, extent and the right and lower edges are kept within the range of an integer. What is not a
/// number becomes 0.
cv::Rect wholePixels(const QRectF& region);
