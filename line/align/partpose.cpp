#include "align/partpose.h"

#include <QtMath>

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace scribo::line {

QPointF foundPoint(const PartPose& pose, QPointF taught)
{
    const double angle = qDegreesToRadians(pose.turn);
    const QPointF arm = taught - pose.pivot;
    return pose.pivot + pose.shift
        + QPointF(std::cos(angle) * arm.x() - std::sin(angle) * arm.y(),
            std::sin(angle) * arm.x() + std::cos(angle) * arm.y());
}

std::array<QPointF, 4> foundCorners(const PartPose& pose, const QRectF& taughtRegion)
{
    return {foundPoint(pose, taughtRegion.topLeft()), foundPoint(pose, taughtRegion.topRight()),
        foundPoint(pose, taughtRegion.bottomRight()), foundPoint(pose, taughtRegion.bottomLeft())};
}

bool isInPicture(const PartPose& pose, const QRectF& taughtRegion, cv::Size picture)
{
    const auto corners = foundCorners(pose, taughtRegion);
    return std::all_of(corners.begin(), corners.end(), [picture](QPointF corner) {
        return corner.x() >= 0 && corner.y() >= 0 && corner.x() <= picture.width && corner.y() <= picture.height;
    });
}

cv::Mat alignedPicture(const cv::Mat& picture, const PartPose& pose)
{
    cv::Mat aligned;
    if (picture.empty()) {
        return aligned;
    }
    // OpenCV counts from the middle of the first pixel.
    const QPointF half(0.5, 0.5);
    const QPointF origin = foundPoint(pose, half) - half;
    const double angle = qDegreesToRadians(pose.turn);
    const cv::Matx23d taughtToFound(
        std::cos(angle), -std::sin(angle), origin.x(), std::sin(angle), std::cos(angle), origin.y());
    cv::warpAffine(
        picture, aligned, taughtToFound, picture.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT);
    return aligned;
}

} // namespace scribo::line
