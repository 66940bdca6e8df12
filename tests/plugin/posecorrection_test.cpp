#include "posecorrection.h"

#include "tool.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <limits>

namespace {

cv::Mat bright(int type = CV_8UC1)
{
    cv::Mat picture(100, 200, type, cv::Scalar::all(200));
    cv::circle(picture, {90, 50}, 12, cv::Scalar::all(40), cv::FILLED);
    return picture;
}

PosePair pose(float taughtX, float taughtY, float taughtAngle, float currentX, float currentY, float currentAngle)
{
    return {taughtX, taughtY, taughtAngle, currentX, currentY, currentAngle};
}

double difference(const cv::Mat& a, const cv::Mat& b)
{
    return cv::norm(a, b, cv::NORM_INF);
}

} // namespace

TEST(PoseCorrection, HasNoResultForAnEmptyPicture)
{
    EXPECT_FALSE(correctedRegion({}, pose(0, 0, 0, 500, 0, 0), {0, 0, 10, 10}));
}

TEST(PoseCorrection, HasNoResultWhileAllCornersAreInPlace)
{
    EXPECT_FALSE(correctedRegion(bright(), pose(100, 50, 0, 110, 55, 5), {80, 40, 40, 20}));
    EXPECT_FALSE(correctedRegion(bright(), {}, {10, 10, 40, 20}));
}

TEST(PoseCorrection, FollowsAPartOnADarkCorner)
{
    cv::Mat picture = bright(CV_8UC3);
    picture.at<cv::Vec3b>(40, 80) = {0, 9, 9};
    const cv::Rect region(80, 40, 40, 20);
    const auto result = correctedRegion(picture, {}, region);
    ASSERT_TRUE(result);
    EXPECT_EQ(difference(*result, picture(region)), 0.0) << "without motion the region itself";
    picture.at<cv::Vec3b>(40, 80) = {9, 0, 0};
    EXPECT_FALSE(correctedRegion(picture, {}, region)) << "only the first byte counts";
}

TEST(PoseCorrection, LooksAtEachCorner)
{
    const cv::Rect region(80, 40, 40, 20);
    for (const cv::Point corner : {cv::Point(80, 40), cv::Point(80, 60), cv::Point(120, 60), cv::Point(120, 40)}) {
        cv::Mat picture = bright();
        picture.at<uchar>(corner) = 0;
        EXPECT_TRUE(correctedRegion(picture, {}, region)) << corner;
    }
}

TEST(PoseCorrection, CountsCornersBeyondTheEdgeAsOutOfPlace)
{
    const cv::Mat picture = bright();
    EXPECT_FALSE(correctedRegion(picture, {}, {0, 0, 199, 99})) << "the last column and row are inside";
    EXPECT_TRUE(correctedRegion(picture, {}, {0, 0, 200, 50}));
    EXPECT_TRUE(correctedRegion(picture, {}, {0, 0, 50, 100}));
    EXPECT_TRUE(correctedRegion(picture, pose(0, 0, 0, -1, 0, 0), {0, 0, 50, 50}));
    EXPECT_TRUE(correctedRegion(picture, pose(0, 0, 0, 0, -1, 0), {0, 0, 50, 50}));
}

TEST(PoseCorrection, CutsWhereThePartIsNow)
{
    const cv::Mat picture = bright();
    const cv::Rect region(150, 20, 40, 60);
    const auto result = correctedRegion(picture, pose(170, 50, 0, 190, 50, 0), region);
    ASSERT_TRUE(result);
    ASSERT_EQ(result->size(), region.size());
    EXPECT_EQ(difference((*result)(cv::Rect(0, 0, 30, 60)), picture(cv::Rect(170, 20, 30, 60))), 0.0);
    EXPECT_EQ(cv::countNonZero((*result)(cv::Rect(30, 0, 10, 60))), 0) << "beyond the picture everything is 0";
}

TEST(PoseCorrection, TurnsAboutTheCurrentPlace)
{
    const cv::Mat picture = bright();
    const PosePair turned = pose(100, 50, 2, 130, 60, 32);
    const cv::Rect region(60, 20, 90, 60);
    const auto result = correctedRegion(picture, turned, region);
    ASSERT_TRUE(result);

    cv::Mat motion = cv::getRotationMatrix2D(cv::Point2f(130, 60), 30, 1.0);
    motion.at<double>(0, 2) -= 60 + 30;
    motion.at<double>(1, 2) -= 20 + 10;
    cv::Mat expected;
    cv::warpAffine(picture, expected, motion, region.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar());
    EXPECT_EQ(difference(*result, expected), 0.0);
}

TEST(PoseCorrection, DecidesByTurningAboutTheTaughtPlace)
{
    // Turned by 90 degrees about (100, 50), the region (90, 10, 20, 20) comes to (60, 40) … (80, 60).
    const PosePair turned = pose(100, 50, 0, 100, 50, 90);
    const cv::Rect region(90, 10, 20, 20);
    EXPECT_FALSE(correctedRegion(bright(), turned, region));
    for (const cv::Point corner : {cv::Point(60, 40), cv::Point(80, 40), cv::Point(80, 60), cv::Point(60, 60)}) {
        cv::Mat picture = bright();
        picture.at<uchar>(corner) = 0;
        EXPECT_TRUE(correctedRegion(picture, turned, region)) << corner;
    }
}

TEST(PoseCorrection, TakesAPoseFarAway)
{
    const PosePair farAway = pose(0, 0, 0, 1e30F, 0, 0);
    EXPECT_TRUE(isFinite(farAway));
    EXPECT_TRUE(correctedRegion(bright(), farAway, {0, 0, 20, 10}));
}

TEST(PoseCorrection, TellsAPoseThatIsNotFinite)
{
    const float infinity = std::numeric_limits<float>::infinity();
    float PosePair::*const numbers[] = {&PosePair::taughtX, &PosePair::taughtY, &PosePair::taughtAngle,
        &PosePair::currentX, &PosePair::currentY, &PosePair::currentAngle};
    for (float PosePair::*const number : numbers) {
        for (const float value : {std::numeric_limits<float>::quiet_NaN(), infinity, -infinity}) {
            PosePair changed = pose(60, 35, 0, 155, 30, 10);
            EXPECT_TRUE(isFinite(changed));
            changed.*number = value;
            EXPECT_FALSE(isFinite(changed));
        }
    }
    EXPECT_FALSE(isFinite(pose(infinity, 0, 0, infinity, 0, 0)));
    EXPECT_FALSE(isFinite(pose(-3e38F, 0, 0, 3e38F, 0, 0))) << "the motion has no number";
}
