#include "inspectorfixture.h"
#include "parameternumbers.h"
#include "pictureimage.h"
#include "settings.h"

#include <QColor>

using namespace scribo::host;

namespace {

using InspectorOfPictures = InspectorFixture;

const cv::Mat greyPicture = cv::Mat::zeros(50, 100, CV_8UC1);
const QList<TaughtRegion> oneRegion = {{QRectF(0, 0, 9, 9), {}, {}}};

} // namespace

TEST_F(InspectorOfPictures, TakesARegionsReferenceAndCountForThatRegionOnly)
{
    set(9, "2");
    set(10, "CD");
    station.write("readings", "AB\nCD\nEFG\n");
    const InspectionResult result = inspector->inspect(greyPicture,
        {{QRectF(0, 0, 9, 9), QString("AB"), {}}, {QRectF(9, 0, 9, 9), {}, {}},
            {QRectF(18, 0, 9, 9), QString("EFG"), CountRange{1, 2}}});
    ASSERT_EQ(result.regions.size(), 3);
    EXPECT_TRUE(result.regions[0].isOk);
    EXPECT_EQ(result.regions[0].reference, "AB");
    EXPECT_TRUE(result.regions[1].isOk);
    EXPECT_FALSE(result.regions[2].isOk);
    EXPECT_FALSE(result.isOk);
    EXPECT_EQ(describe(10), "\"CD\"");
    EXPECT_EQ(describe(13), "3 (limits 0:99999)");
    ASSERT_EQ(result.regions[2].ngLines.size(), 1);
    EXPECT_EQ(result.regions[2].ngLines[0].box, QRect(18, 0, 9, 9));
}

TEST_F(InspectorOfPictures, FindsADisabledModelOk)
{
    set(3, "2");
    const InspectionResult result = inspector->inspect(greyPicture, oneRegion);
    EXPECT_TRUE(result.isOk);
    EXPECT_TRUE(result.regions[0].isOk);
    EXPECT_EQ(result.regions[0].count, -1);
}

TEST_F(InspectorOfPictures, DrawsTheOverlayOnACopyInTrueColours)
{
    station.write("readings", "@pixel\n");
    cv::Mat picture(50, 100, CV_8UC3, cv::Scalar(200, 100, 50));
    const InspectionResult result = inspector->inspect(picture, {{QRectF(0, 0, 10, 10), {}, {}}});
    EXPECT_EQ(result.regions[0].text, "200,100,50");
    const QImage overlay = inspector->overlay();
    EXPECT_EQ(overlay.size(), QSize(100, 50));
    EXPECT_EQ(overlay.pixelColor(5, 5), QColor(Qt::green));
    EXPECT_EQ(overlay.pixelColor(50, 25), QColor(200, 100, 50));
    EXPECT_EQ(picture.at<cv::Vec3b>(5, 5), cv::Vec3b(200, 100, 50));
}

TEST_F(InspectorOfPictures, HasNoOverlayOfAnEmptyPicture)
{
    EXPECT_TRUE(inspector->overlay().isNull());
    EXPECT_EQ(inspector->inspect(cv::Mat(), oneRegion).regions.size(), 1);
    EXPECT_TRUE(inspector->overlay().isNull());
}

TEST_F(InspectorOfPictures, HandsOverThePoseOfThisPictureOnly)
{
    station.write("readings", "@pose\n");
    PosePair pose;
    pose.currentX = 7;
    pose.currentY = 8.5;
    EXPECT_EQ(inspector->inspect(greyPicture, oneRegion, pose).regions[0].text, "7,8.5");
    EXPECT_EQ(inspector->inspect(greyPicture, oneRegion).regions[0].text, "no pose");
}

TEST_F(InspectorOfPictures, GivesResultsThatOutliveIt)
{
    set(ParameterNumber::compare, "2");
    const InspectionResult result = inspector->inspect(greyPicture, oneRegion);
    inspector.reset();
    ASSERT_EQ(result.regions.size(), 1);
    EXPECT_EQ(result.regions[0].text, "AB12");
    ASSERT_EQ(result.regions[0].ngLines.size(), 1);
    EXPECT_EQ(result.regions[0].ngLines[0].text, "AB12");
    EXPECT_GE(result.milliseconds, 0);
}

TEST_F(InspectorOfPictures, HasSettingsOfItsOwn)
{
    const auto other = makeInspector();
    set(ParameterNumber::compare, "2");
    set(ParameterNumber::reference, "AB12");
    activateSettings(*processor);
    EXPECT_EQ(comparisonOf(*processor), Comparison::fixed);
    EXPECT_EQ(comparisonOf(other->processor()), Comparison::off);
    EXPECT_EQ(errorText(applySettings(currentSettings(*processor), other->processor())), "");
    EXPECT_EQ(comparisonOf(other->processor()), Comparison::fixed);
    EXPECT_EQ(currentSettings(other->processor()), currentSettings(*processor));
    EXPECT_EQ(
        errorText(applySettings({}, other->processor())), "not a settings file: the array \"paramsWrap\" is missing");
}

TEST(PictureTool, HandsOutOneRegionAnItemAndNoPose)
{
    PictureTool tool;
    tool.setCycle(greyPicture, {QRectF(1, 1, 2, 2), QRectF(3, 3, 4, 4)}, {});
    EXPECT_EQ(tool.imageWidth(), 100);
    EXPECT_EQ(tool.imageHeight(), 50);
    EXPECT_EQ(tool.regions(1), QList<QRectF>{QRectF(3, 3, 4, 4)});
    EXPECT_TRUE(tool.regions(2).isEmpty());
    EXPECT_TRUE(tool.regions(-1).isEmpty());
    PosePair pose;
    EXPECT_FALSE(tool.upstreamPose("any", 0, &pose));
}

TEST(PictureTool, ArchivesNowhereUnlessToldWhere)
{
    PictureTool tool;
    EXPECT_EQ(tool.toolDirectory(), "/dev/null/");
    EXPECT_EQ(tool.removableDiskPath(), "");
    EXPECT_EQ(tool.toolIdentity(), "C1_T1");
    EXPECT_FALSE(tool.savingAllowed());
    tool.setArchive({"C2_T3", "/some/folder", "/media/disk/", true});
    EXPECT_EQ(tool.toolDirectory(), "/some/folder/");
    EXPECT_EQ(tool.removableDiskPath(), "/media/disk");
    EXPECT_EQ(tool.toolIdentity(), "C2_T3");
    EXPECT_TRUE(tool.savingAllowed());
    tool.setArchive({"C2_T3", {}, "/", true});
    EXPECT_EQ(tool.toolDirectory(), "/dev/null/");
    EXPECT_EQ(tool.removableDiskPath(), "/");
}

TEST(PictureImage, CopiesGreyAndColour)
{
    cv::Mat grey(2, 3, CV_8UC1, cv::Scalar(40));
    const QImage image = pictureImage(grey);
    grey.setTo(0);
    EXPECT_EQ(image.format(), QImage::Format_RGB32);
    EXPECT_EQ(image.size(), QSize(3, 2));
    EXPECT_EQ(image.pixelColor(2, 1), QColor(40, 40, 40));
    const cv::Mat wide(4, 10, CV_8UC3, cv::Scalar(1, 2, 3));
    EXPECT_EQ(pictureImage(wide(cv::Rect(3, 1, 3, 2))).pixelColor(2, 1), QColor(1, 2, 3));
    EXPECT_TRUE(pictureImage(cv::Mat()).isNull());
}
