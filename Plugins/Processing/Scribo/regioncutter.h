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

/// Whether `region` is there to be inspected: one below a pixel in either direction is not.
bool isInspected(const QRectF& region);

/// The part of a picture of size `picture` that the inspection region `region` asks for.
///
/// Nothing for a region that is not to be inspected, and for one that cannot be cut out: of which no whole
/// pixel lies in the picture, or with a coordinate that is not a number. A left or upper edge outside the
/// picture moves to its edge without making the region smaller.
std::optional<RegionCut> cutRegion(const QRectF& region, const cv::Size& picture);

/// `region` in whole pixels, halves rounded to the even neighbour, wherever it lies: the box of a region that cannot be
/// cut out. Edges beyond the range of an integer move to its end, so that right and bottom edge are integers too. What
/// is not a number reads as 0.
cv::Rect wholePixels(const QRectF& region);
