#include "posecorrection.h"

#include "tool.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// The region's corners after it has moved with the part.
std::vector<cv::Point> movedCorners(const PosePair& pose, const cv::Rect& region)
{
    cv::Mat motion = cv::getRotationMatrix2D({pose.taughtX, pose.taughtY}, pose.currentAngle - pose.taughtAngle, 1.0);
    motion.at<double>(0, 2) += pose.currentX - pose.taughtX;
    motion.at<double>(1, 2) += pose.currentY - pose.taughtY;

    const int right = region.x + region.width;
    const int bottom = region.y + region.height;
    const std::vector<cv::Point> corners
        = {{region.x, region.y}, {region.x, bottom}, {right, bottom}, {right, region.y}};
    std::vector<cv::Point> moved;
    cv::transform(corners, moved, motion);
    return moved;
}

bool isOutOfPlace(const cv::Mat& picture, const cv::Point& corner)
{
    if (corner.x < 0 || corner.y < 0 || corner.x > picture.cols - 1 || corner.y > picture.rows - 1) {
        return true;
    }
    return *picture.ptr(corner.y, corner.x) == 0;
}

/// Turns the picture about where the part is now and shifts the region's place to the origin.
cv::Mat warped(const cv::Mat& picture, const PosePair& pose, const cv::Rect& region)
{
    cv::Mat motion = cv::getRotationMatrix2D({pose.currentX, pose.currentY}, pose.currentAngle - pose.taughtAngle, 1.0);
    motion.at<double>(0, 2) -= region.x + (pose.currentX - pose.taughtX);
    motion.at<double>(1, 2) -= region.y + (pose.currentY - pose.taughtY);

    cv::Mat result;
    cv::warpAffine(picture, result, motion, region.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar::all(0));
    return result;
}

} // namespace

bool isFinite(const PosePair& pose)
{
    // The motion is made of the differences, which are finite only if both numbers are.
    return std::isfinite(pose.currentX - pose.taughtX) && std::isfinite(pose.currentY - pose.taughtY)
        && std::isfinite(pose.currentAngle - pose.taughtAngle);
}

std::optional<cv::Mat> correctedRegion(const cv::Mat& picture, const PosePair& pose, const cv::Rect& region)
{
    if (picture.empty()) {
        return {};
    }
    const std::vector<cv::Point> corners = movedCorners(pose, region);
    const bool anyOutOfPlace = std::any_of(
        corners.begin(), corners.end(), [&picture](const cv::Point& corner) { return isOutOfPlace(picture, corner); });
    if (!anyOutOfPlace) {
        return {};
    }
    return warped(picture, pose, region);
}
