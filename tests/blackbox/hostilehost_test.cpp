// A host that does everything wrong. The plug-in answers all the same: nothing reaches the host as an exception, and
// the next good item is judged as usual.

#include "loadedplugin.h"
#include "scriptedtool.h"

#include <QImage>
#include <QJsonArray>
#include <QPainter>

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

class HostileHost : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(plugin.root(), nullptr) << plugin.errorString().toStdString();
        tool.picture = goodPicture();
        tool.taughtRegions = {QRectF(0, 0, tool.picture.cols, tool.picture.rows)};
    }

    static cv::Mat goodPicture()
    {
        cv::Mat picture(40, 200, CV_8UC1, cv::Scalar(230));
        cv::putText(picture, "A4827", {20, 30}, cv::FONT_HERSHEY_DUPLEX, 1.0, cv::Scalar(20), 2, cv::LINE_AA);
        return picture;
    }

    /// The reading of a picture that nothing is wrong with.
    QString readGoodPicture(ProcessorInterface& processor)
    {
        tool.picture = goodPicture();
        tool.taughtRegions = {QRectF(0, 0, tool.picture.cols, tool.picture.rows)};
        processor.process(&tool, 0);
        EXPECT_TRUE(processor.isResultOk(0));
        return processor.resultRecord(0)["resString"].toString();
    }

    LoadedPlugin plugin;
    ScriptedTool tool;
};

} // namespace

TEST_F(HostileHost, HandsOverOddPictures)
{
    const auto processor = plugin.makeInstance(&tool);
    const QString expected = readGoodPicture(*processor);
    ASSERT_FALSE(expected.isEmpty());

    const cv::Mat whole(64, 300, CV_8UC3, cv::Scalar(200, 190, 180));
    const std::vector<cv::Mat> pictures = {
        cv::Mat(),
        cv::Mat(1, 1, CV_8UC1, cv::Scalar(0)),
        cv::Mat(1, 4000, CV_8UC1, cv::Scalar(9)),
        cv::Mat(4000, 1, CV_8UC3, cv::Scalar::all(9)),
        cv::Mat(50, 50, CV_8UC2, cv::Scalar::all(0)),
        cv::Mat(50, 50, CV_8UC4, cv::Scalar::all(0)),
        cv::Mat(50, 50, CV_16UC1, cv::Scalar(40000)),
        cv::Mat(50, 50, CV_32FC1, cv::Scalar(notANumber)),
        cv::Mat(50, 50, CV_64FC3, cv::Scalar::all(infinity)),
        whole(cv::Rect(7, 3, 201, 33)),
    };
    for (const cv::Mat& picture : pictures) {
        tool.picture = picture;
        tool.taughtRegions = {QRectF(0, 0, 50, 30), QRectF(0, 0, picture.cols, picture.rows)};
        for (int index : {0, 1, 31, 32, -1, INT_MAX, INT_MIN}) {
            processor->process(&tool, index);
        }
    }
    EXPECT_EQ(readGoodPicture(*processor), expected);
}

TEST_F(HostileHost, TeachesRegionsThatNoPictureHas)
{
    const auto processor = plugin.makeInstance(&tool);
    const QString expected = readGoodPicture(*processor);
    const QList<QRectF> regions = {
        QRectF(notANumber, 0, 10, 10),
        QRectF(0, notANumber, 10, 10),
        QRectF(0, 0, notANumber, 10),
        QRectF(0, 0, 10, notANumber),
        QRectF(infinity, 0, 10, 10),
        QRectF(0, 0, infinity, infinity),
        QRectF(-infinity, -infinity, infinity, infinity),
        QRectF(-1e300, 0, 2e300, 10),
        QRectF(1e9, 1e9, 1e9, 1e9),
        QRectF(-50, -50, 20, 20),
        QRectF(500, 10, 20, 20),
        QRectF(0, 0, 0.5, 30),
        QRectF(0, 0, 30, 0),
        QRectF(10, 10, -20, -20),
        QRectF(199.6, 39.6, 5, 5),
        QRectF(113.5, 0, 87.5, 40),
    };
    for (const QRectF& region : regions) {
        tool.taughtRegions = {region};
        processor->process(&tool, 0);
    }
    tool.taughtRegions = regions;
    processor->process(&tool, 0);
    EXPECT_FALSE(processor->isResultOk(0)) << "some of which were not read";
    QImage canvas(200, 40, QImage::Format_RGB32);
    QPainter painter(&canvas);
    processor->drawResult(&painter, 0);
    EXPECT_EQ(readGoodPicture(*processor), expected);
}

TEST_F(HostileHost, HasNoTool)
{
    const std::unique_ptr<ProcessorInterface> orphan(plugin.root()->clone(nullptr, true));
    orphan->process(nullptr, 0);
    EXPECT_FALSE(orphan->isResultOk(0));
    orphan->process(&tool, 0);
    orphan->archivePictures(nullptr);
    orphan->drawResult(nullptr, 0);
    EXPECT_FALSE(orphan->isResultOk(-2));
    EXPECT_FALSE(orphan->isResultOk(INT_MAX));
    EXPECT_FALSE(orphan->isResultOk(INT_MIN));
    plugin.root()->process(&tool, 0);
}

TEST_F(HostileHost, RestoresSettingsOfAnotherProgram)
{
    const auto processor = plugin.makeInstance(&tool);
    const QString expected = readGoodPicture(*processor);
    const QJsonArray junk = {1, "two", QJsonValue::Null, QJsonArray{1}, QJsonObject{{"values", QJsonArray{}}},
        QJsonObject{{"values", "x"}, {"lowThresh", "y"}, {"highThresh", true}}, true};
    for (const QJsonValue& value :
        {QJsonValue(5), QJsonValue("text"), QJsonValue(QJsonObject()), QJsonValue(QJsonArray()), QJsonValue(junk)}) {
        processor->loadParams(QJsonObject{{"paramsWrap", value}});
        processor->process(&tool, 0);
    }
    const auto fresh = plugin.makeInstance(&tool);
    EXPECT_EQ(readGoodPicture(*fresh), expected);
}

TEST_F(HostileHost, ClearsItsSwitches)
{
    const auto processor = plugin.makeInstance(&tool);
    for (int number : {3, 4, 9}) {
        setParameter(*processor, number, QJsonArray{});
        processor->process(&tool, 0);
        setParameter(*processor, number, QJsonArray{true, true, true});
        processor->process(&tool, 0);
    }
}

TEST_F(HostileHost, AsksForResultsThatAreNotThere)
{
    const auto processor = plugin.makeInstance(&tool);
    QImage canvas(200, 40, QImage::Format_RGB32);
    canvas.fill(Qt::white);
    const QImage blank = canvas.copy();
    QPainter painter(&canvas);
    for (int index : {0, -1, 7, INT_MAX, INT_MIN}) {
        processor->drawResult(&painter, index);
        const QVariantMap record = processor->resultRecord(index);
        EXPECT_EQ(record.keys(), processor->resultTemplate().keys());
        EXPECT_TRUE(record["defect_rects"].toList().isEmpty());
    }
    painter.end();
    EXPECT_EQ(canvas, blank);
}

TEST_F(HostileHost, DeletesInstancesAtOnceAfterUse)
{
    for (int round = 0; round < 20; ++round) {
        const auto processor = plugin.makeInstance(&tool);
        processor->process(&tool, 0);
    }
}
