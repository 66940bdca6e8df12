#include "align/partpose.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

namespace scribo::line {
namespace {

PartPose makePose(QPointF pivot, QPointF shift, double turn)
{
    PartPose pose;
    pose.pivot = pivot;
    pose.shift = shift;
    pose.turn = turn;
    return pose;
}

void expectNear(QPointF point, double x, double y)
{
    EXPECT_NEAR(point.x(), x, 1e-9);
    EXPECT_NEAR(point.y(), y, 1e-9);
}

TEST(PartPose, OfThePartAsTaughtLeavesPointsWhereTheyAre)
{
    expectNear(foundPoint(makePose({50, 40}, {0, 0}, 0), {3, 7}), 3, 7);
}

TEST(PartPose, TurnsClockwiseAboutThePivotAndThenMoves)
{
    // Right of the pivot, a quarter clockwise: below it.
    expectNear(foundPoint(makePose({50, 40}, {5, -2}, 90), {60, 40}), 55, 48);
}

TEST(PartPose, GivesCornersClockwiseFromTheUpperLeft)
{
    const auto corners = foundCorners(makePose({0, 0}, {100, 10}, 0), QRectF(1, 2, 30, 20));
    expectNear(corners[0], 101, 12);
    expectNear(corners[1], 131, 12);
    expectNear(corners[2], 131, 32);
    expectNear(corners[3], 101, 32);
}

TEST(PartPose, KnowsWhenARegionHasLeftThePicture)
{
    const cv::Size picture(100, 80);
    const QRectF region(10, 10, 20, 20);
    EXPECT_TRUE(isInPicture(makePose({50, 40}, {-10, -10}, 0), region, picture));
    EXPECT_FALSE(isInPicture(makePose({50, 40}, {-10.1, 0}, 0), region, picture));
    EXPECT_FALSE(isInPicture(makePose({50, 40}, {0, -10.1}, 0), region, picture));
    EXPECT_TRUE(isInPicture(makePose({50, 40}, {70, 50}, 0), region, picture));
    EXPECT_FALSE(isInPicture(makePose({50, 40}, {70.1, 0}, 0), region, picture));
    EXPECT_FALSE(isInPicture(makePose({50, 40}, {0, 50.1}, 0), region, picture));
    EXPECT_FALSE(isInPicture(makePose({20, 20}, {-9, 0}, 45), region, picture));
}

TEST(AlignedPicture, OfNoPictureIsEmpty)
{
    EXPECT_TRUE(alignedPicture(cv::Mat(), PartPose()).empty());
}

TEST(AlignedPicture, OfThePartAsTaughtIsThePicture)
{
    cv::Mat picture(40, 60, CV_8UC3);
    cv::randu(picture, 0, 255);
    const cv::Mat aligned = alignedPicture(picture, makePose({10, 10}, {0, 0}, 0));
    EXPECT_EQ(cv::norm(picture, aligned, cv::NORM_INF), 0);
    EXPECT_NE(aligned.data, picture.data);
}

TEST(AlignedPicture, ShiftsBackByWholePixelsExactlyAndFillsWithBlack)
{
    cv::Mat picture(40, 60, CV_8UC1);
    cv::randu(picture, 1, 255);
    const cv::Mat aligned = alignedPicture(picture, makePose({10, 10}, {7, -3}, 0));
    ASSERT_EQ(aligned.type(), CV_8UC1);
    ASSERT_EQ(aligned.size(), picture.size());
    const cv::Mat expected = picture(cv::Rect(7, 0, 53, 37));
    EXPECT_EQ(cv::norm(aligned(cv::Rect(0, 3, 53, 37)), expected, cv::NORM_INF), 0);
    EXPECT_EQ(cv::countNonZero(aligned.rowRange(0, 2)), 0);
    EXPECT_EQ(cv::countNonZero(aligned.colRange(54, 60)), 0);
}

TEST(AlignedPicture, TurnsBackAboutThePivot)
{
    // A picture turned clockwise by a quarter about its middle, which is between pixels.
    cv::Mat taught(50, 50, CV_8UC1);
    cv::randu(taught, 0, 255);
    cv::Mat turned;
    cv::rotate(taught, turned, cv::ROTATE_90_CLOCKWISE);
    const cv::Mat aligned = alignedPicture(turned, makePose({25, 25}, {0, 0}, 90));
    EXPECT_EQ(cv::norm(taught, aligned, cv::NORM_INF), 0);
}

} // namespace
} // namespace scribo::line
