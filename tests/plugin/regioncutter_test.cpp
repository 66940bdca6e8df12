#include "regioncutter.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

const cv::Size picture(101, 50);

std::optional<cv::Rect> pixels(double x, double y, double width, double height)
{
    const std::optional<RegionCut> cut = cutRegion(QRectF(x, y, width, height), picture);
    return cut ? std::optional(cut->pixels) : std::nullopt;
}

} // namespace

TEST(RegionCutter, KeepsARegionInsideThePicture)
{
    EXPECT_EQ(pixels(10, 20, 30, 25), cv::Rect(10, 20, 30, 25));
    EXPECT_EQ(pixels(0, 0, 101, 50), cv::Rect(0, 0, 101, 50));
    EXPECT_EQ(pixels(100, 49, 1, 1), cv::Rect(100, 49, 1, 1));
}

TEST(RegionCutter, SkipsWhatIsSmallerThanAPixel)
{
    EXPECT_EQ(pixels(10, 10, 0.5, 20), std::nullopt);
    EXPECT_EQ(pixels(10, 10, 20, 0.999), std::nullopt);
    EXPECT_EQ(pixels(10, 10, 0, 0), std::nullopt);
    EXPECT_EQ(pixels(10, 10, -5, 20), std::nullopt);
    EXPECT_EQ(pixels(10, 10, 1.0, 1.0), cv::Rect(10, 10, 1, 1));
}

TEST(RegionCutter, ClipsToThePicture)
{
    EXPECT_EQ(pixels(-5, -6, 30, 20), cv::Rect(0, 0, 30, 20)) << "the edge moves, the size stays";
    EXPECT_EQ(pixels(90, 40, 30, 20), cv::Rect(90, 40, 11, 10));
    EXPECT_EQ(pixels(-5, -6, 300, 200), cv::Rect(0, 0, 101, 50));
}

TEST(RegionCutter, RoundsHalvesToTheEvenNeighbour)
{
    EXPECT_EQ(pixels(2.5, 3.5, 20.5, 21.5), cv::Rect(2, 4, 20, 22));
    EXPECT_EQ(pixels(2.4, 3.6, 20.4, 21.6), cv::Rect(2, 4, 20, 22));
}

TEST(RegionCutter, ClipsAgainAfterRounding)
{
    // 13.5 rounds to 14 and 87.5 to 88: one pixel more than the picture has.
    EXPECT_EQ(pixels(13.5, 0, 87.5, 50), cv::Rect(14, 0, 87, 50));
}

TEST(RegionCutter, SkipsWhatLiesOutside)
{
    EXPECT_EQ(pixels(101, 0, 10, 10), std::nullopt);
    EXPECT_EQ(pixels(0, 50, 10, 10), std::nullopt);
    EXPECT_EQ(pixels(1e9, 1e9, 1e9, 1e9), std::nullopt);
    EXPECT_EQ(pixels(100.6, 10, 5, 5), std::nullopt) << "rounds to the column after the last";
}

TEST(RegionCutter, CutsNothingWhereANumberIsNone)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(pixels(nan, 0, 10, 10), std::nullopt);
    EXPECT_EQ(pixels(0, nan, 10, 10), std::nullopt);
    EXPECT_EQ(pixels(0, 0, nan, 10), std::nullopt);
    EXPECT_EQ(pixels(0, 0, 10, nan), std::nullopt);
}

TEST(RegionCutter, ClipsWhatIsInfinite)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(pixels(20, 10, infinity, infinity), cv::Rect(20, 10, 81, 40)) << "up to the edge";
    EXPECT_EQ(pixels(-infinity, -infinity, 30, 20), cv::Rect(0, 0, 30, 20));
    EXPECT_EQ(pixels(infinity, 0, 10, 10), std::nullopt);
    EXPECT_EQ(pixels(0, infinity, 10, 10), std::nullopt);
    EXPECT_EQ(pixels(0, 0, -infinity, 10), std::nullopt);
    EXPECT_EQ(pixels(-1e300, -1e300, 1e300, 1e300), cv::Rect(0, 0, 101, 50));
}

TEST(RegionCutter, TellsWhatIsNotToBeInspectedFromWhatCannotBeCut)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (const QRectF& region : {QRectF(0, 0, 0.999, 20), QRectF(0, 0, 20, 0), QRectF(0, 0, -5, 20)}) {
        EXPECT_FALSE(isInspected(region));
    }
    for (const QRectF& region :
        {QRectF(0, 0, 1, 1), QRectF(500, 500, 20, 20), QRectF(nan, 0, 20, 20), QRectF(0, 0, nan, 20)}) {
        EXPECT_TRUE(isInspected(region));
    }
}

TEST(RegionCutter, SkipsEverythingInAnEmptyPicture)
{
    EXPECT_EQ(cutRegion(QRectF(0, 0, 10, 10), cv::Size(0, 0)).has_value(), false);
    EXPECT_EQ(cutRegion(QRectF(0, 0, 10, 10), cv::Size(-4, 7)).has_value(), false);
}

TEST(RegionCutter, KeepsFractionsForTheBoxes)
{
    EXPECT_EQ(cutRegion(QRectF(13.7, 4.5, 20.2, 10.9), picture)->inside, QRectF(13.7, 4.5, 20.2, 10.9));
    EXPECT_EQ(cutRegion(QRectF(-3.5, 45.25, 20.5, 10.9), picture)->inside, QRectF(0, 45.25, 20.5, 4.75));
    EXPECT_EQ(cutRegion(QRectF(13.7, 4.5, 20.2, 10.9), picture)->pixels, cv::Rect(14, 4, 20, 11));
}

TEST(RegionCutter, GivesEveryRegionABox)
{
    EXPECT_EQ(wholePixels(QRectF(300.5, 20.4, 30.5, 31.5)), cv::Rect(300, 20, 30, 32)) << "halves to even";
    EXPECT_EQ(wholePixels(QRectF(-40.6, -2.5, 10, 20)), cv::Rect(-41, -2, 10, 20));

    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(wholePixels(QRectF(nan, 5, 10, nan)), cv::Rect(0, 5, 10, 0));
}

TEST(RegionCutter, KeepsABoxWithinIntegers)
{
    constexpr int least = std::numeric_limits<int>::min();
    constexpr int most = std::numeric_limits<int>::max();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(wholePixels(QRectF(1e300, -1e300, 40, 20)), cv::Rect(most, least, 0, 20));
    EXPECT_EQ(wholePixels(QRectF(infinity, -infinity, infinity, infinity)), cv::Rect(most, least, 0, most));
    EXPECT_EQ(wholePixels(QRectF(most - 30.0, 10, 40, 1e10)), cv::Rect(most - 30, 10, 30, most - 10));
    EXPECT_EQ(wholePixels(QRectF(-10, 0, 1e10, 1e9)), cv::Rect(-10, 0, most, 1000000000));
}
