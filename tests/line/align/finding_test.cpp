#include "align/partfinder.h"
#include "scenes.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

namespace scribo::line {
namespace {

using testing::HasSubstr;

PartPose makePose(const scenes::Label& label, double x, double y, double turn)
{
    PartPose pose;
    pose.pivot = label.pivot();
    pose.shift = QPointF(x, y);
    pose.turn = turn;
    return pose;
}

PartFinder taught(const scenes::Label& label, const AlignmentSettings& ranges = {})
{
    AlignmentSettings settings = ranges;
    settings.patch = label.patch();
    auto finder = PartFinder::teach(label.taughtPicture(1), settings);
    if (!finder) {
        throw std::runtime_error(finder.error().message);
    }
    return *finder;
}

/// A label that was taught.
class Finding : public testing::Test
{
protected:
    Finding()
        : label(3)
        , finder(taught(label))
    {
    }

    void expectFault(const cv::Mat& picture, NotFoundReason reason, const char* part) const
    {
        const auto found = finder.find(picture);
        ASSERT_FALSE(found) << found->score;
        EXPECT_EQ(found.error().reason, reason) << qPrintable(found.error().message);
        EXPECT_THAT(found.error().message.toStdString(), HasSubstr(part));
    }

    scenes::Label label;
    PartFinder finder;
};

TEST_F(Finding, IsWithinAPixelOnDrawnScenes)
{
    double sum = 0;
    double worst = 0;
    int corners = 0;
    int missed = 0;
    constexpr int pictures = 40;
    std::vector<PartFinder> finders;
    for (std::uint64_t i = 0; i < 6; ++i) {
        finders.push_back(taught(scenes::Label(i)));
    }
    for (std::uint64_t i = 0; i < pictures; ++i) {
        cv::RNG random(i + 1);
        const scenes::Label part(i % 6);
        const PartPose truth = scenes::randomPose(random, part.pivot(), 60, 12);
        scenes::Disturbance disturbance = scenes::randomDisturbance(random);
        const auto found = finders[i % 6].find(part.picture(truth, i + 300, disturbance));
        if (!found) {
            EXPECT_TRUE(disturbance.glare) << "picture " << i << ": " << qPrintable(found.error().message);
            ++missed;
            continue;
        }
        for (const QRectF& region : part.regions()) {
            for (const double error : scenes::cornerErrors(*found, truth, region)) {
                sum += error;
                worst = std::max(worst, error);
                ++corners;
            }
        }
    }
    EXPECT_LE(missed, pictures / 8);
    EXPECT_LT(sum / corners, 0.2);
    EXPECT_LT(worst, 2);
}

TEST_F(Finding, FindsNothingWhereThePartIsNot)
{
    for (std::uint64_t i = 0; i < 12; ++i) {
        cv::RNG random(i + 1);
        const PartPose pose = scenes::randomPose(random, label.pivot(), 60, 12);
        const scenes::Disturbance disturbance = scenes::randomDisturbance(random);
        EXPECT_FALSE(finder.find(scenes::Label(3 * i + 300).picture(pose, i, disturbance))) << "other label " << i;
        EXPECT_FALSE(finder.find(scenes::belt(i))) << "belt " << i;
        EXPECT_FALSE(finder.find(scenes::otherParts(i, disturbance))) << "other part " << i;
        EXPECT_FALSE(finder.find(label.coveredPicture(pose, i, disturbance))) << "covered " << i;
    }
}

TEST_F(Finding, SaysHowFarThePartMovedAndTurned)
{
    const auto found = finder.find(label.picture(makePose(label, 31.25, -17.5, 7.5), 4, {}));
    ASSERT_TRUE(found) << qPrintable(found.error().message);
    EXPECT_NEAR(found->shift.x(), 31.25, 0.1);
    EXPECT_NEAR(found->shift.y(), -17.5, 0.1);
    EXPECT_NEAR(found->turn, 7.5, 0.05);
    EXPECT_GT(found->score, 0.95);
    EXPECT_LE(found->score, 1 + 1e-6);
}

TEST_F(Finding, MakesThePictureThatWasTaught)
{
    const PartPose truth = makePose(label, -41.3, 22.8, -11);
    const cv::Mat picture = label.picture(truth, 1, {});
    const auto found = finder.find(picture);
    ASSERT_TRUE(found);
    const cv::Mat aligned = alignedPicture(picture, *found);
    const cv::Mat original = label.taughtPicture(1);
    for (const QRectF& region : label.regions()) {
        const QRect rect = region.toRect();
        const cv::Rect area(rect.x(), rect.y(), rect.width(), rect.height());
        const double pixels = area.area() * 3;
        EXPECT_LT(cv::norm(aligned(area), original(area), cv::NORM_L1) / pixels, 8);
        // Without the alignment the difference is of another kind.
        EXPECT_GT(cv::norm(picture(area), original(area), cv::NORM_L1) / pixels, 20);
    }
}

TEST_F(Finding, WorksInGreyWhatWasTaughtInColour)
{
    cv::Mat grey;
    cv::cvtColor(label.picture(makePose(label, 12, 34, -5), 4, {}), grey, cv::COLOR_RGB2GRAY);
    const auto found = finder.find(grey);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->shift.x(), 12, 0.1);
    EXPECT_NEAR(found->turn, -5, 0.05);
}

TEST_F(Finding, LeavesThePictureAsItIs)
{
    const cv::Mat picture = label.picture(makePose(label, 5, 5, 5), 4, {});
    const cv::Mat before = picture.clone();
    ASSERT_TRUE(finder.find(picture));
    EXPECT_EQ(cv::norm(before, picture, cv::NORM_INF), 0);
}

TEST_F(Finding, TakesAPictureThatIsAWindowOfALargerOne)
{
    const cv::Mat picture = label.picture(makePose(label, 5, 5, 5), 4, {});
    cv::Mat larger;
    cv::copyMakeBorder(picture, larger, 3, 3, 7, 7, cv::BORDER_CONSTANT);
    const auto expected = finder.find(picture);
    const auto found = finder.find(larger(cv::Rect(7, 3, picture.cols, picture.rows)));
    ASSERT_TRUE(expected && found);
    EXPECT_EQ(found->shift, expected->shift);
}

TEST_F(Finding, RefusesPicturesThatItDoesNotKnow)
{
    const char* const message = "the picture is empty, not grey or RGB with 8 bits, or longer than 32767 pixels";
    expectFault(cv::Mat(), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(1024, 1280, CV_8UC4, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(1024, 1280, CV_8UC2, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(1024, 1280, CV_16UC1, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(1024, 1280, CV_32FC1, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(300, 32768, CV_8UC1, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(32768, 300, CV_8UC1, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
    const int sizes[] = {300, 300, 3};
    expectFault(cv::Mat(3, sizes, CV_8UC1, cv::Scalar::all(9)), NotFoundReason::unusablePicture, message);
}

TEST_F(Finding, RefusesPicturesSmallerThanThePatch)
{
    const char* const message = "the picture is smaller than the taught patch";
    const QSize patch = label.patch().size();
    expectFault(cv::Mat(1, 1, CV_8UC1, cv::Scalar(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(patch.height() - 1, 1280, CV_8UC1, cv::Scalar(9)), NotFoundReason::unusablePicture, message);
    expectFault(cv::Mat(1024, patch.width() - 1, CV_8UC1, cv::Scalar(9)), NotFoundReason::unusablePicture, message);
}

TEST_F(Finding, FindsNothingInAPictureThatEndsBeforeThePlaceThatWasTaught)
{
    cv::Mat small(100, 200, CV_8UC1);
    cv::randu(small, 0, 255);
    expectFault(small, NotFoundReason::lowScore, "nothing in the picture resembles the taught patch");
}

TEST_F(Finding, FindsNothingInFlatPictures)
{
    for (const double grey : {0.0, 77.0, 255.0}) {
        expectFault(cv::Mat(1024, 1280, CV_8UC1, cv::Scalar(grey)), NotFoundReason::lowScore,
            "nothing in the picture resembles the taught patch");
        expectFault(cv::Mat(1024, 1280, CV_8UC3, cv::Scalar::all(grey)), NotFoundReason::lowScore,
            "nothing in the picture resembles the taught patch");
    }
}

TEST_F(Finding, FindsThePartOnAFlatGround)
{
    cv::Mat picture(1024, 1280, CV_8UC3, cv::Scalar::all(0));
    const QRect from = label.patch();
    const cv::Rect rect(from.x(), from.y(), from.width(), from.height());
    label.taughtPicture(1)(rect).copyTo(picture(rect + cv::Point(20, -30)));
    const auto found = finder.find(picture);
    ASSERT_TRUE(found) << qPrintable(found.error().message);
    EXPECT_NEAR(found->shift.x(), 20, 0.05);
    EXPECT_NEAR(found->shift.y(), -30, 0.05);
}

TEST_F(Finding, DoesNotFindAFaintGhost)
{
    cv::Mat ghost = label.taughtPicture(1);
    ghost = ghost * 0.05 + cv::Scalar::all(100);
    const auto found = finder.find(ghost);
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().reason, NotFoundReason::lowScore);
}

TEST_F(Finding, DoesNotFindTheNegative)
{
    cv::Mat negative;
    cv::bitwise_not(label.taughtPicture(1), negative);
    const auto found = finder.find(negative);
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().reason, NotFoundReason::lowScore);
}

TEST_F(Finding, SaysTheScoreThatWasTooLow)
{
    AlignmentSettings strict;
    strict.minimumScore = 0.99;
    const PartFinder strictFinder = taught(label, strict);
    scenes::Disturbance noisy;
    noisy.noise = 25;
    const auto found = strictFinder.find(label.picture(makePose(label, 5, 5, 5), 4, noisy));
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().reason, NotFoundReason::lowScore);
    EXPECT_GT(found.error().bestScore, 0.7);
    EXPECT_EQ(found.error().message,
        QStringLiteral("the best place has a score of %1, the minimum is 0.99")
            .arg(found.error().bestScore, 0, 'f', 2));
}

TEST_F(Finding, SaysWhenThePartIsThereTwice)
{
    AlignmentSettings wide;
    wide.shiftY = 130;
    // A label whose second drawing does not resemble the first.
    const PartFinder wideFinder = taught(label, wide);
    cv::Mat picture = label.taughtPicture(1);
    const cv::Rect from(label.patch().x(), label.patch().y(), label.patch().width(), label.patch().height());
    picture(from).copyTo(picture(from + cv::Point(0, 110)));
    const auto found = wideFinder.find(picture);
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().reason, NotFoundReason::ambiguous);
    EXPECT_EQ(found.error().message, "two places look like the patch, with scores of 1.00 and 1.00");
    EXPECT_GT(found.error().bestScore, 0.95);
}

TEST_F(Finding, SaysWhenThePartMovedFurtherThanTaught)
{
    const auto reasonAt = [this](double x, double y, double turn) {
        const auto found = finder.find(label.picture(makePose(label, x, y, turn), 4, {}));
        return found ? QString("found") : found.error().message;
    };
    EXPECT_EQ(reasonAt(59.5, 0, 0), "found");
    EXPECT_THAT(reasonAt(63, 0, 0).toStdString(), HasSubstr("the part moved by 63.0"));
    EXPECT_THAT(reasonAt(0, -63, 0).toStdString(), HasSubstr("further than was taught"));
    EXPECT_EQ(reasonAt(0, 0, 14.8), "found");
    EXPECT_THAT(reasonAt(0, 0, -16).toStdString(), HasSubstr("turned by -16.0"));
    expectFault(
        label.picture(makePose(label, 63, 0, 0), 4, {}), NotFoundReason::outsideRange, "further than was taught");
    expectFault(label.picture(makePose(label, 150, 0, 0), 4, {}), NotFoundReason::lowScore, "");
}

TEST_F(Finding, SaysWhenThePicturesEdgeCutsThePatch)
{
    // The picture without its first columns: the part is the same, and the edge takes some of the patch.
    AlignmentSettings wide;
    wide.shiftX = 600;
    const PartFinder wideFinder = taught(label, wide);
    const cv::Mat whole = label.taughtPicture(1);
    const auto cutBy = [&](int columns) {
        const int from = label.patch().x() + columns;
        return wideFinder.find(whole.colRange(from, whole.cols).clone());
    };
    const int width = label.patch().width();
    EXPECT_TRUE(cutBy(0));
    EXPECT_TRUE(cutBy(width / 20)) << "a twentieth missing does not matter";
    const auto cut = cutBy(width / 4);
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.error().reason, NotFoundReason::cut) << qPrintable(cut.error().message);
    EXPECT_THAT(cut.error().message.toStdString(), HasSubstr("the picture's edge cuts the patch: 7"));
    EXPECT_FALSE(cutBy(width * 3 / 4));
    EXPECT_FALSE(cutBy(width + 20));
}

TEST_F(Finding, TakesRangesLargerThanThePicture)
{
    AlignmentSettings wide;
    wide.shiftX = 10000;
    wide.shiftY = 10000;
    const auto finder = taught(label, wide);
    const auto found = finder.find(label.picture(makePose(label, -350, 300, 9), 2, {}));
    ASSERT_TRUE(found) << qPrintable(found.error().message);
    EXPECT_NEAR(found->shift.x(), -350, 0.1);
    EXPECT_NEAR(found->shift.y(), 300, 0.1);
}

TEST_F(Finding, KeepsTheTurnAtNoneWhenThePartDoesNotTurn)
{
    AlignmentSettings straight;
    straight.turn = 0;
    const auto found = taught(label, straight).find(label.picture(makePose(label, 8.5, -3.25, 0.2), 4, {}));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->turn, 0);
    EXPECT_NEAR(found->shift.x(), 8.5, 0.2);
}

TEST_F(Finding, TakesPatchesOfAnySize)
{
    for (const QRect& patch : {QRect(520, 398, 24, 24), QRect(430, 376, 37, 91), QRect(440, 390, 143, 30),
             QRect(425, 377, 64, 95), QRect(402, 354, 477, 317)}) {
        const QSize size = patch.size();
        AlignmentSettings settings;
        settings.patch = patch;
        const auto finder = PartFinder::teach(label.taughtPicture(1), settings);
        ASSERT_TRUE(finder) << size.width() << " x " << size.height() << ": " << finder.error().message;
        PartPose truth = makePose(label, 14.5, 20.25, 3);
        const auto found = finder->find(label.picture(truth, 1, {}));
        ASSERT_TRUE(found) << size.width() << " x " << size.height() << ": " << qPrintable(found.error().message);
        EXPECT_THAT(scenes::cornerErrors(*found, truth, QRectF(settings.patch)), testing::Each(testing::Lt(0.5)))
            << size.width();
    }
}

TEST_F(Finding, TakesASymmetricalPatch)
{
    cv::Mat picture(1024, 1280, CV_8UC1, cv::Scalar(200));
    cv::rectangle(picture, cv::Rect(600, 440, 80, 20), cv::Scalar(40), cv::FILLED);
    cv::rectangle(picture, cv::Rect(630, 410, 20, 80), cv::Scalar(40), cv::FILLED);
    AlignmentSettings settings;
    settings.patch = QRect(590, 400, 100, 100);
    const auto cross = PartFinder::teach(picture, settings);
    ASSERT_TRUE(cross) << cross.error().message;
    const cv::Mat matrix = cv::getRotationMatrix2D({639.5F, 449.5F}, -10, 1); // OpenCV's positive is the other way
    cv::Mat turned;
    cv::warpAffine(picture, turned, matrix, picture.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    const auto found = cross->find(turned);
    ASSERT_TRUE(found) << qPrintable(found.error().message);
    EXPECT_NEAR(found->turn, 10, 0.1);
    EXPECT_NEAR(found->shift.x(), 0, 0.1);
}

} // namespace
} // namespace scribo::line
