#include "jobs/preparedjob.h"

#include "files/picturereader.h"
#include "jobs/jobfile.h"
#include "line/jobs/jobfolder.h"

#include <QDir>

#include <gmock/gmock.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace scribo::line {
namespace {

/// A job on the label of the samples, which says PN:7741-B, 2026.11.20 and REV(3).
class JobOnALabel : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(QDir::setCurrent(QStringLiteral(SCRIBO_WORK_FOLDER)));
        auto loaded = host::ProcessorPlugin::load(QStringLiteral(SCRIBO_PLUGIN_FILE));
        ASSERT_TRUE(loaded) << loaded.error().message;
        plugin = std::make_unique<host::ProcessorPlugin>(std::move(*loaded));
    }

    JobOnALabel()
    {
        frame.picture
            = host::readPicture(QStringLiteral(SCRIBO_SOURCE_FOLDER "/samples/08_label.png")).value_or(cv::Mat());
        context.at = QDateTime(QDate(2026, 11, 20), QTime(12, 0), Qt::UTC);
    }

    Result<std::shared_ptr<PreparedJob>> prepare()
    {
        folder.save();
        const auto job = readJob(folder.path());
        if (!job) {
            return failure(job.error().sentences.join(QLatin1Char('\n')).toStdString());
        }
        return PreparedJob::prepare(*job, *plugin, {});
    }

    Judgement judge()
    {
        const auto job = prepare();
        EXPECT_TRUE(job) << job.error().message;
        return job ? (*job)->judge(frame, context) : Judgement();
    }

    static std::unique_ptr<host::ProcessorPlugin> plugin;
    test::JobFolder folder;
    Frame frame;
    ItemContext context;
};

std::unique_ptr<host::ProcessorPlugin> JobOnALabel::plugin;

TEST_F(JobOnALabel, SaysOkWhenEveryRegionReadsWhatIsExpected)
{
    folder.setRegion(1, QStringLiteral("expected"), QStringLiteral("{date:yyyy.MM.dd}"));
    const auto job = prepare();
    ASSERT_TRUE(job) << job.error().message;
    EXPECT_EQ((*job)->identity().name, QStringLiteral("label"));
    EXPECT_EQ((*job)->identity().number, 7);
    EXPECT_EQ((*job)->identity().jobHash.size(), 64);
    EXPECT_EQ((*job)->identity().modelHash.size(), 64);
    const Judgement judgement = (*job)->judge(frame, context);
    EXPECT_TRUE(judgement.isOk) << judgement.reasonText.toStdString();
    EXPECT_EQ(judgement.reason, Reason::none);
    ASSERT_EQ(judgement.readings.size(), 2);
    EXPECT_EQ(judgement.readings[0].text, QStringLiteral("PN:7741-B"));
    EXPECT_EQ(judgement.readings[0].expected, QStringLiteral("PN:7741-B"));
    EXPECT_EQ(judgement.readings[1].name, QStringLiteral("date"));
    EXPECT_EQ(judgement.readings[1].text, QStringLiteral("2026.11.20"));
    EXPECT_GT(judgement.processMilliseconds, 0);
    ASSERT_TRUE(judgement.picture);
    EXPECT_EQ(judgement.picture->size(), frame.picture.size());
}

TEST_F(JobOnALabel, NamesThePartThatDiffers)
{
    folder.setRegion(1, QStringLiteral("expected"), QStringLiteral("{date:yyyy.MM.dd}"));
    context.at = QDateTime(QDate(2026, 12, 20), QTime(12, 0), Qt::UTC);
    const Judgement judgement = judge();
    EXPECT_FALSE(judgement.isOk);
    EXPECT_EQ(judgement.reason, Reason::textDiffers);
    EXPECT_EQ(judgement.reasonText, QStringLiteral("date: month is 11, expected 12"));
    EXPECT_TRUE(judgement.readings[0].isOk);
    EXPECT_FALSE(judgement.readings[1].isOk);
}

TEST_F(JobOnALabel, ReadsWhereNothingIsExpected)
{
    const Judgement judgement = judge();
    EXPECT_TRUE(judgement.isOk) << judgement.reasonText.toStdString();
    EXPECT_EQ(judgement.readings[1].text, QStringLiteral("2026.11.20"));
    EXPECT_EQ(judgement.readings[1].expected, QString());
}

TEST_F(JobOnALabel, JudgesPartsThatVaryItself)
{
    folder.setRegion(1, QStringLiteral("expected"), QStringLiteral("2026.{match:[0-9]{2}}.{match:[0-9]{2}}"));
    EXPECT_TRUE(judge().isOk);
    folder.setRegion(1, QStringLiteral("expected"), QStringLiteral("2026.{match:[A-Z]{2}}.20"));
    const Judgement judgement = judge();
    EXPECT_FALSE(judgement.isOk);
    EXPECT_EQ(judgement.reason, Reason::ruleNotMet);
    EXPECT_FALSE(judgement.reasonText.isEmpty());
}

TEST_F(JobOnALabel, CountsCharacters)
{
    folder.setRegion(1, QStringLiteral("count"), QJsonArray{9, 9});
    Judgement judgement = judge();
    EXPECT_EQ(judgement.reason, Reason::characterCount);
    EXPECT_EQ(judgement.reasonText, QStringLiteral("date: 10 characters, expected 9"));
    folder.setRegion(1, QStringLiteral("count"), QJsonArray{1, 10});
    EXPECT_TRUE(judge().isOk);
    folder.setRegion(0, QStringLiteral("count"), QJsonArray{2, 8});
    judgement = judge();
    EXPECT_EQ(judgement.reason, Reason::characterCount);
    EXPECT_EQ(judgement.reasonText, QStringLiteral("part: 9 characters, expected 2 to 8"));
}

TEST_F(JobOnALabel, IsNgWithoutTheLotThatItNeeds)
{
    folder.setRegion(0, QStringLiteral("expected"), QStringLiteral("PN:{lot}"));
    Judgement judgement = judge();
    EXPECT_EQ(judgement.reason, Reason::ruleNotMet);
    EXPECT_EQ(judgement.readings[0].text, QStringLiteral("PN:7741-B")) << "it is read all the same";
    context.lot = QStringLiteral("7741-B");
    EXPECT_TRUE(judge().isOk);
}

TEST_F(JobOnALabel, AcceptsBothDaysAroundMidnight)
{
    folder.json[QStringLiteral("text")]
        = QJsonObject{{QStringLiteral("timeZone"), QStringLiteral("UTC")}, {QStringLiteral("graceMinutes"), 10}};
    folder.setRegion(1, QStringLiteral("expected"), QStringLiteral("{date:yyyy.MM.dd}"));
    for (const auto& at : {QDateTime(QDate(2026, 11, 21), QTime(0, 5), Qt::UTC),
             QDateTime(QDate(2026, 11, 19), QTime(23, 55), Qt::UTC)}) {
        context.at = at;
        const Judgement judgement = judge();
        EXPECT_TRUE(judgement.isOk) << judgement.reasonText.toStdString();
        EXPECT_EQ(judgement.readings[1].expected, QStringLiteral("2026.11.20"));
    }
    context.at = QDateTime(QDate(2026, 11, 21), QTime(0, 15), Qt::UTC);
    EXPECT_FALSE(judge().isOk);
}

TEST_F(JobOnALabel, IsNgWhenARegionIsNotInThePicture)
{
    folder.setRegion(1, QStringLiteral("rect"), QJsonArray{5000, 10, 100, 40});
    const Judgement judgement = judge();
    EXPECT_EQ(judgement.reason, Reason::regionOutside);
    EXPECT_EQ(judgement.reasonText, QStringLiteral("date: the region is not in the picture"));
}

TEST_F(JobOnALabel, FollowsThePart)
{
    cv::Mat grey;
    cv::cvtColor(frame.picture, grey, cv::COLOR_RGB2GRAY);
    const cv::Rect patch(120, 50, 300, 80);
    cv::imwrite(folder.file(QStringLiteral("patch.png")).toStdString(), grey(patch));
    folder.json[QStringLiteral("alignment")] = QJsonObject{{QStringLiteral("patch"), QStringLiteral("patch.png")},
        {QStringLiteral("rect"), QJsonArray{patch.x, patch.y, patch.width, patch.height}}};
    const auto job = prepare();
    ASSERT_TRUE(job) << job.error().message;

    const cv::Mat moved = (cv::Mat_<double>(2, 3) << 1, 0, 25, 0, 1, -18);
    cv::Mat picture;
    cv::warpAffine(frame.picture, picture, moved, frame.picture.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    Frame shifted;
    shifted.picture = picture;
    Judgement judgement = (*job)->judge(shifted, context);
    EXPECT_TRUE(judgement.isOk) << judgement.reasonText.toStdString();
    EXPECT_EQ(judgement.readings[0].text, QStringLiteral("PN:7741-B"));

    shifted.picture = cv::Mat(frame.picture.size(), CV_8UC3, cv::Scalar(120, 120, 120));
    judgement = (*job)->judge(shifted, context);
    EXPECT_FALSE(judgement.isOk);
    EXPECT_EQ(judgement.reason, Reason::partNotFound);
    EXPECT_FALSE(judgement.reasonText.isEmpty());
    EXPECT_TRUE(judgement.readings.isEmpty());
}

TEST_F(JobOnALabel, TakesColourAndGrey)
{
    cv::Mat grey;
    cv::cvtColor(frame.picture, grey, cv::COLOR_RGB2GRAY);
    frame.picture = grey;
    EXPECT_TRUE(judge().isOk);
}

TEST_F(JobOnALabel, CannotBePreparedWithoutItsModel)
{
    folder.json[QStringLiteral("model")] = QStringLiteral("ocr_other_p1_1_v2.trt");
    const auto job = prepare();
    ASSERT_FALSE(job);
    EXPECT_THAT(job.error().message, testing::StartsWith("job label: model/ocr_other_p1_1_v2.trt: "));
}

TEST_F(JobOnALabel, CannotBePreparedWithTheModelSwitchedOff)
{
    auto inspector = host::Inspector::make(*plugin);
    ASSERT_TRUE(inspector);
    QJsonObject settings;
    (*inspector)->processor().saveParams(settings);
    QJsonArray parameters = settings[QStringLiteral("paramsWrap")].toArray();
    QJsonObject enable = parameters[2].toObject();
    enable[QStringLiteral("values")] = QJsonArray{false, true};
    parameters[2] = enable;
    settings[QStringLiteral("paramsWrap")] = parameters;
    folder.write(QStringLiteral("settings.json"), QJsonDocument(settings).toJson());
    folder.json[QStringLiteral("settings")] = QStringLiteral("settings.json");
    const auto job = prepare();
    ASSERT_FALSE(job);
    EXPECT_EQ(job.error().message, "job label: the plug-in's settings switch the model off: nothing would be read");
}

TEST_F(JobOnALabel, CannotBePreparedWithAPatchWithoutStructure)
{
    cv::imwrite(folder.file(QStringLiteral("patch.png")).toStdString(), cv::Mat(40, 60, CV_8UC1, cv::Scalar(9)));
    folder.json[QStringLiteral("alignment")] = QJsonObject{
        {QStringLiteral("patch"), QStringLiteral("patch.png")}, {QStringLiteral("rect"), QJsonArray{20, 30, 60, 40}}};
    EXPECT_FALSE(prepare());
}

} // namespace
} // namespace scribo::line
