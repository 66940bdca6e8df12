// The pictures of an inspection: what is cut out, what is archived and what is drawn over them.

#include "inspectionfixture.h"

#include "archive/recordingpaintdevice.h"
#include "posecorrection.h"

#include <QImage>
#include <QPainter>

#include <opencv2/imgproc.hpp>

namespace {

void expectPicture(const QImage& picture, const cv::Mat& expected)
{
    ASSERT_EQ(picture.size(), QSize(expected.cols, expected.rows));
    for (int y = 0; y < expected.rows; ++y) {
        for (int x = 0; x < expected.cols; ++x) {
            ASSERT_EQ(qRed(picture.pixel(x, y)), expected.at<uchar>(y, x)) << x << ", " << y;
        }
    }
}

} // namespace

TEST_F(Inspection, FollowsThePose)
{
    set(4, QJsonArray{true, true});
    cv::randu(tool.picture, 0, 256);
    tool.hasPose = true;
    tool.pose = {60, 35, 0, 155, 30, 10};
    const cv::Rect region(10, 20, 100, 30);
    const auto expected = correctedRegion(tool.picture, tool.pose, region);
    ASSERT_TRUE(expected) << "moved by 95 pixels, the region leaves the picture";
    process(0, {a1});
    expectPicture(archivedPicture("OK"), *expected);
}

TEST_F(Inspection, ReadsTheUprightRegionWhereThePoseGivesNone)
{
    set(4, QJsonArray{true, true});
    cv::randu(tool.picture, 1, 256);
    tool.hasPose = true;
    tool.pose = {60, 35, 0, 63, 33, 0};
    const cv::Rect region(10, 20, 100, 30);
    ASSERT_FALSE(correctedRegion(tool.picture, tool.pose, region)) << "its corners stay on bright pixels";
    process(0, {a1});
    expectPicture(archivedPicture("OK"), tool.picture(region));
}

TEST_F(Inspection, ArchivesThePictureOfEachRegion)
{
    set(4, QJsonArray{true, true});
    compareWith("A1");
    tool.picture = cv::Mat(60, 200, CV_8UC3, cv::Scalar(200, 100, 50));
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20), QRectF(0, 0, 25, 25)};
    RuntimeDouble& script = RuntimeDouble::instance();
    const int perRun = script.synchronizations / static_cast<int>(script.runs.size());
    script.failingSynchronizations = {script.synchronizations + 2 * perRun + 1};
    process(0, {a1, aa});
    EXPECT_THAT(archivedFiles(),
        testing::ElementsAre("OK/C1_T1ROI1_TIME_A1.bmp", "NG/ng/C1_T1ROI2_TIME_AA.bmp",
            "NG/ng_notype/C1_T1ROI3_TIME_unknown error!.bmp"));
    const QImage picture = archivedPicture("OK");
    EXPECT_EQ(picture.size(), QSize(40, 20));
    EXPECT_EQ(picture.pixelColor(5, 5), QColor(200, 100, 50)) << "the host's order is red, green, blue";
}

TEST_F(Inspection, NumbersThePicturesOfEachItemByItsLines)
{
    set(4, QJsonArray{true, true});
    tool.taughtRegions = {QRectF(tool.picture.cols, 5, 30, 20), QRectF(10, 20, 40, 20)};
    process(0, {a1});
    EXPECT_THAT(archivedFiles(), testing::ElementsAre("OK/C1_T1ROI2_TIME_A1.bmp"))
        << "the region that is not in the picture has a line, but no picture";
    process(1, {a1});
    EXPECT_THAT(archivedFiles(), testing::ElementsAre("OK/C1_T1ROI2_TIME_A1.bmp", "OK/C1_T1ROI2_TIME_A1.bmp"));

    tool.announced = cv::Size(300, 60); // of which the first region lies outside the picture that comes
    tool.taughtRegions = {QRectF(250, 5, 30, 20), QRectF(0, 0, 10, 10), QRectF(10, 20, 40, 20)};
    process(2, {aa, aa});
    EXPECT_THAT(archivedFiles(), testing::IsSupersetOf({"OK/C1_T1ROI2_TIME_AA.bmp", "OK/C1_T1ROI3_TIME_AA.bmp"}));
}

TEST_F(Inspection, ArchivesWithoutReadingWhenTheModelIsDisabled)
{
    set(3, QJsonArray{false, true});
    set(4, QJsonArray{true, false});
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20)};
    const std::size_t runs = RuntimeDouble::instance().runs.size();
    process(0, {});
    EXPECT_TRUE(instance->isResultOk(0));
    EXPECT_EQ(RuntimeDouble::instance().runs.size(), runs);
    EXPECT_THAT(archivedFiles(), testing::ElementsAre("OK/C1_T1ROI1_TIME_.bmp", "OK/C1_T1ROI2_TIME_.bmp"));
    EXPECT_TRUE(scribo().modelEntries().isEmpty());
}

TEST_F(Inspection, PreparesTheModelsFolders)
{
    instance->archivePictures(&tool);
    const QDir folder(tool.directory + "AISavePic/" + modelName() + "_C1_T1");
    for (const char* sub : {"OK", "NG/ng", "NG/ng_notype"}) {
        EXPECT_TRUE(folder.exists(sub)) << sub;
    }
    EXPECT_THAT(archivedFiles(), testing::IsEmpty());
}

TEST_F(Inspection, DrawsAnItemsLines)
{
    compareWith("A1");
    tool.taughtRegions = {QRectF(10, 20, 100, 30)};
    process(0, {{1, 2, 1}});
    QImage canvas(200, 60, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    instance->drawResult(&painter, 1);
    EXPECT_EQ(painter.pen().style(), Qt::SolidLine);
    EXPECT_EQ(canvas.pixelColor(10, 30), QColor(Qt::black)) << "item 1 has no result";
    instance->drawResult(&painter, 0);
    EXPECT_EQ(canvas.pixelColor(10, 30), QColor("#FF5252")) << "the box of a line that is NG";

    RecordingPaintDevice device;
    QPainter recorder(&device);
    instance->drawResult(&recorder, 0);
    std::vector<std::string> characters;
    for (const PaintedItem& item : device.items()) {
        if (item.rect.isNull()) {
            characters.push_back((item.text + item.pen.color().name(QColor::HexRgb)).toStdString());
        }
    }
    EXPECT_THAT(characters, testing::ElementsAre("A#4caf50", "1#4caf50", "A#ff5252"))
        << "the one that the reference has not";
}
