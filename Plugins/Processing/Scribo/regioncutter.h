#pragma once

#include <QRectF>

#include <opencv2/core/types.hpp>

#include <optional>

/// The pixels of a picture of size `picture` that the inspection region `region` asks for: clipped to the
/// picture and rounded to whole pixels, halves to the even neighbour.
///
/// Nothing for a region that is not to be inspected: smaller than a pixel in one direction, outside the
/// picture, or with a number that is not finite. A left or upper edge outside the picture moves to its
/// edge without making the region smaller.
std::optional<cv::Rect> regionPixels(const QRectF& region, const cv::Size& picture);
