#pragma once

#include <QPointF>
#include <QRectF>

#include <array>
#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>

namespace scribo::line {

/// Where a part is now, against where it was taught: it turned about `pivot` and then moved by `shift`.
///
/// All points are in pixels from the upper left corner of the picture: the pixel in column x covers x to x + 1.
struct PartPose
{
    QPointF pivot; ///< the centre of the taught patch, in the taught picture
    QPointF shift; ///< positive: to the right, down
    double turn = 0; ///< degrees; positive: clockwise on the screen
    double score = 0; ///< normalised correlation of the patch and its place, up to 1
};

/// Where a point of the taught picture is now.
QPointF foundPoint(const PartPose& pose, QPointF taught);

/// Where the corners of a taught region are now, clockwise from the upper left; for drawing over the picture as taken.
std::array<QPointF, 4> foundCorners(const PartPose& pose, const QRectF& taughtRegion);

/// Whether a taught region is now wholly in a picture of this size. If not, its image in the aligned picture has black
/// pixels that the camera did not see.
bool isInPicture(const PartPose& pose, const QRectF& taughtRegion, cv::Size picture);

/// `picture` turned and shifted back, so that the part is where it was taught: of the same size and type, pixels
/// interpolated linearly, those that the camera did not see black. An empty picture gives an empty one.
cv::Mat alignedPicture(const cv::Mat& picture, const PartPose& pose);

} // namespace scribo::line
