#include "align/partfinder.h"
#include "scenes.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace scribo::line {
namespace {

using testing::HasSubstr;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::string faultOf(const cv::Mat& picture, const AlignmentSettings& settings)
{
    const auto finder = PartFinder::teach(picture, settings);
    return finder ? std::string() : finder.error().message;
}

/// A label and the settings that teach its logo.
class Teaching : public testing::Test
{
protected:
    Teaching()
        : label(3)
        , picture(label.taughtPicture(1))
    {
        settings.patch = label.patch();
    }

    scenes::Label label;
    cv::Mat picture;
    AlignmentSettings settings;
};

TEST_F(Teaching, TakesAPatchWithPrint)
{
    const auto finder = PartFinder::teach(picture, settings);
    ASSERT_TRUE(finder) << finder.error().message;
    EXPECT_EQ(finder->settings().patch, settings.patch);
    EXPECT_EQ(finder->patchPicture().type(), CV_8UC1);
    EXPECT_EQ(finder->patchPicture().cols, settings.patch.width());
    EXPECT_EQ(finder->patchPicture().rows, settings.patch.height());
}

TEST_F(Teaching, RefusesPicturesThatItDoesNotKnow)
{
    const std::string message = "the taught picture is empty, not grey or RGB with 8 bits, or longer than 32767 pixels";
    EXPECT_EQ(faultOf(cv::Mat(), settings), message);
    EXPECT_EQ(faultOf(cv::Mat(1024, 1280, CV_8UC4, cv::Scalar::all(9)), settings), message);
    EXPECT_EQ(faultOf(cv::Mat(1024, 1280, CV_8UC2, cv::Scalar::all(9)), settings), message);
    EXPECT_EQ(faultOf(cv::Mat(1024, 1280, CV_16UC1, cv::Scalar::all(9)), settings), message);
    EXPECT_EQ(faultOf(cv::Mat(1024, 1280, CV_32FC3, cv::Scalar::all(9)), settings), message);
    EXPECT_EQ(faultOf(cv::Mat(30, 32768, CV_8UC1, cv::Scalar::all(9)), settings), message);
    const int sizes[] = {30, 30, 30};
    EXPECT_EQ(faultOf(cv::Mat(3, sizes, CV_8UC1, cv::Scalar::all(9)), settings), message);
}

TEST_F(Teaching, RefusesShiftRangesOutOfTheirLimits)
{
    for (const double bad : {notANumber, -60.0, 0.0, 0.9, 10001.0, std::numeric_limits<double>::infinity()}) {
        settings.shiftX = bad;
        settings.shiftY = 60;
        EXPECT_EQ(faultOf(picture, settings), "the shift range is not from 1 to 10000 pixels") << bad;
        settings.shiftX = 60;
        settings.shiftY = bad;
        EXPECT_EQ(faultOf(picture, settings), "the shift range is not from 1 to 10000 pixels") << bad;
    }
}

TEST_F(Teaching, RefusesTurnRangesOutOfTheirLimits)
{
    for (const double bad : {notANumber, -0.1, 15.1, std::numeric_limits<double>::infinity()}) {
        settings.turn = bad;
        EXPECT_EQ(faultOf(picture, settings), "the turn range is not from 0 to 15 degrees") << bad;
    }
}

TEST_F(Teaching, RefusesMinimumScoresOutOfTheirLimits)
{
    for (const double bad : {notANumber, 0.0, 0.29, 1.01, -1.0}) {
        settings.minimumScore = bad;
        EXPECT_EQ(faultOf(picture, settings), "the minimum score is not from 0.3 to 1") << bad;
    }
}

TEST_F(Teaching, RefusesSmallPatches)
{
    for (const QRect& bad :
        {QRect(), QRect(450, 400, 23, 100), QRect(450, 400, 100, 23), QRect(450, 400, -100, -100)}) {
        settings.patch = bad;
        EXPECT_EQ(faultOf(picture, settings), "the patch is smaller than 24 x 24 pixels");
    }
}

TEST_F(Teaching, RefusesPatchesThatDoNotLieInThePicture)
{
    for (const QRect& bad : {QRect(-1, 400, 100, 60), QRect(450, -1, 100, 60), QRect(1181, 400, 100, 60),
             QRect(450, 965, 100, 60), QRect(5000, 5000, 100, 60), QRect(0, 0, 1281, 1024)}) {
        settings.patch = bad;
        EXPECT_EQ(faultOf(picture, settings), "the patch does not lie in the picture");
    }
}

TEST_F(Teaching, RefusesAFlatPatch)
{
    const std::string message = "the patch has no structure: choose one with print or edges in it";
    for (const double grey : {0.0, 128.0, 255.0}) {
        EXPECT_EQ(faultOf(cv::Mat(1024, 1280, CV_8UC1, cv::Scalar(grey)), settings), message);
    }
}

TEST_F(Teaching, RefusesAPatchOfNothingButNoise)
{
    cv::Mat noise(1024, 1280, CV_8UC1);
    cv::RNG(5).fill(noise, cv::RNG::NORMAL, 128, 8);
    EXPECT_EQ(faultOf(noise, settings), "the patch has no structure: choose one with print or edges in it");
}

TEST_F(Teaching, RefusesStripesAndASingleEdge)
{
    const std::string message
        = "the patch looks the same when it is shifted along a line: choose one with corners or print";
    for (const double angle : {0.0, 30.0, 45.0, 90.0}) {
        cv::Mat stripes(1024, 1280, CV_8UC1, cv::Scalar(200));
        const cv::Point2d along(std::cos(angle * CV_PI / 180), std::sin(angle * CV_PI / 180));
        const cv::Point2d middle(settings.patch.center().x(), settings.patch.center().y());
        for (int i = -4; i <= 4; ++i) {
            const cv::Point2d at = middle + cv::Point2d(-along.y, along.x) * (i * i * 4.0 * (i < 0 ? -1 : 1));
            cv::line(stripes, at - along * 2000.0, at + along * 2000.0, cv::Scalar(30), 4, cv::LINE_AA);
        }
        EXPECT_EQ(faultOf(stripes, settings), message) << angle;
    }
    cv::Mat edge(1024, 1280, CV_8UC1, cv::Scalar(200));
    edge.colRange(settings.patch.center().x(), edge.cols).setTo(40);
    EXPECT_EQ(faultOf(edge, settings), message);
}

TEST_F(Teaching, RefusesRingsUnlessThePartDoesNotTurn)
{
    cv::Mat rings(1024, 1280, CV_8UC1, cv::Scalar(200));
    settings.patch = QRect(500, 400, 140, 140);
    cv::circle(rings, {570, 470}, 50, cv::Scalar(40), 14, cv::LINE_AA);
    cv::circle(rings, {570, 470}, 20, cv::Scalar(90), cv::FILLED, cv::LINE_AA);
    EXPECT_EQ(faultOf(rings, settings),
        "the patch looks the same when it is turned: choose another, or set the turn range to 0");
    settings.turn = 0;
    EXPECT_EQ(faultOf(rings, settings), "");
}

TEST_F(Teaching, RefusesAPatchThatRepeats)
{
    cv::Mat squares(1024, 1280, CV_8UC1, cv::Scalar(220));
    for (int y = 0; y < squares.rows; y += 40) {
        for (int x = 0; x < squares.cols; x += 40) {
            cv::rectangle(squares, cv::Rect(x, y, 20, 20), cv::Scalar(30), cv::FILLED);
        }
    }
    EXPECT_THAT(faultOf(squares, settings), HasSubstr("another place within the search range looks like the patch"));
}

TEST_F(Teaching, RefusesAPatchThatIsThereTwice)
{
    const cv::Rect from(settings.patch.x(), settings.patch.y(), settings.patch.width(), settings.patch.height());
    picture(from).copyTo(picture(from + cv::Point(0, 110)));
    EXPECT_EQ(faultOf(picture, settings), "");
    settings.shiftY = 120;
    EXPECT_THAT(faultOf(picture, settings), HasSubstr("(score 1.00): choose a patch that is there once"));
}

TEST_F(Teaching, KeepsItsOwnCopyOfThePatch)
{
    const cv::Mat kept = picture.clone();
    const auto finder = PartFinder::teach(picture, settings);
    ASSERT_TRUE(finder);
    picture.setTo(0);
    EXPECT_TRUE(finder->find(kept));
}

TEST_F(Teaching, IsRestoredFromPatchAndSettings)
{
    const auto finder = PartFinder::teach(picture, settings);
    ASSERT_TRUE(finder);
    const auto restored = PartFinder::restore(finder->patchPicture(), finder->settings());
    ASSERT_TRUE(restored) << restored.error().message;
    cv::RNG random(11);
    const cv::Mat moved = label.picture(scenes::randomPose(random, label.pivot(), 60, 12), 5, {});
    const auto expected = finder->find(moved);
    const auto found = restored->find(moved);
    ASSERT_TRUE(expected && found);
    EXPECT_EQ(found->shift, expected->shift);
    EXPECT_EQ(found->turn, expected->turn);
    EXPECT_EQ(found->score, expected->score);
    EXPECT_EQ(found->pivot, expected->pivot);
}

TEST_F(Teaching, RestoresNothingThatCannotBeRight)
{
    const auto fault = [](const cv::Mat& patch, const AlignmentSettings& settings) {
        const auto finder = PartFinder::restore(patch, settings);
        return finder ? std::string() : finder.error().message;
    };
    const cv::Mat flat(settings.patch.height(), settings.patch.width(), CV_8UC1, cv::Scalar(100));
    EXPECT_EQ(fault(cv::Mat(), settings),
        "the patch's picture is empty, not grey or RGB with 8 bits, or longer than 32767 pixels");
    EXPECT_EQ(fault(picture, settings), "the patch's picture does not have the size of the taught patch");
    EXPECT_THAT(fault(flat, settings), HasSubstr("no structure"));
    AlignmentSettings wild = settings;
    wild.patch.setLeft(std::numeric_limits<int>::min());
    EXPECT_EQ(fault(flat, wild), "the patch does not lie in the picture");
    wild.patch = settings.patch;
    wild.patch.setBottom(std::numeric_limits<int>::max());
    EXPECT_EQ(fault(flat, wild), "the patch does not lie in the picture");
    settings.turn = 20;
    EXPECT_EQ(fault(flat, settings), "the turn range is not from 0 to 15 degrees");
}

TEST_F(Teaching, TakesAPatchAtThePicturesEdge)
{
    // The label moved into the corner; its patch touches two edges.
    const cv::Point corner(settings.patch.x(), settings.patch.y());
    const cv::Mat cornered = picture(cv::Rect(corner, picture.size() - cv::Size(corner.x, corner.y))).clone();
    settings.patch.moveTo(0, 0);
    const auto finder = PartFinder::teach(cornered, settings);
    ASSERT_TRUE(finder) << finder.error().message;
    EXPECT_TRUE(finder->find(cornered));
}

} // namespace
} // namespace scribo::line
