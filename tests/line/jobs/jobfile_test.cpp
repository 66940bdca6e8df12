#include "jobs/jobfile.h"

#include "line/jobs/jobfolder.h"

#include <QDir>

#include <gmock/gmock.h>
#include <opencv2/imgcodecs.hpp>

namespace scribo::line {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class JobFile : public testing::Test
{
protected:
    Job read()
    {
        folder.save();
        const auto job = readJob(folder.path());
        EXPECT_TRUE(job) << job.error().sentences.join(QLatin1Char('\n')).toStdString();
        return job.value_or(Job());
    }

    std::vector<std::string> faults()
    {
        folder.save();
        const auto job = readJob(folder.path());
        std::vector<std::string> sentences;
        if (!job) {
            for (const QString& sentence : job.error().sentences) {
                sentences.push_back(sentence.toStdString());
            }
        }
        return sentences;
    }

    void addAlignment()
    {
        cv::imwrite(folder.file(QStringLiteral("patch.png")).toStdString(), cv::Mat(40, 60, CV_8UC1, cv::Scalar(9)));
        folder.json[QStringLiteral("alignment")] = QJsonDocument::fromJson(
            R"({"patch": "patch.png", "rect": [20, 30, 60, 40], "shift": [50, 30], "turn": 12, "minimumScore": 0.8})")
                                                       .object();
    }

    test::JobFolder folder;
};

TEST_F(JobFile, IsReadWhole)
{
    addAlignment();
    folder.write(QStringLiteral("settings.json"), R"({"paramsWrap": []})");
    folder.json[QStringLiteral("settings")] = QStringLiteral("settings.json");
    folder.json[QStringLiteral("source")] = QJsonObject{{QStringLiteral("gain"), 2}};
    folder.json[QStringLiteral("requireValidation")] = true;
    folder.json[QStringLiteral("text")] = QJsonObject{{QStringLiteral("dayBegins"), QStringLiteral("06:00")}};
    folder.setRegion(1, QStringLiteral("count"), QJsonArray{8, 10});
    const Job job = read();
    EXPECT_EQ(job.folder, folder.path());
    EXPECT_EQ(job.name, QStringLiteral("label"));
    EXPECT_EQ(job.number, 7);
    EXPECT_EQ(job.model, QStringLiteral("ocr_printed_p1_1_v1.trt"));
    EXPECT_TRUE(job.settings.contains(QStringLiteral("paramsWrap")));
    EXPECT_EQ(job.source[QStringLiteral("gain")].toInt(), 2);
    EXPECT_TRUE(job.requiresValidation);
    EXPECT_EQ(job.text.dayBegin, QTime(6, 0));
    ASSERT_EQ(job.regions.size(), 2);
    EXPECT_EQ(job.regions[0].name, QStringLiteral("part"));
    EXPECT_EQ(job.regions[0].rect, QRectF(132, 64, 270, 52));
    EXPECT_EQ(job.regions[0].expected, QStringLiteral("PN:7741-B"));
    EXPECT_FALSE(job.regions[0].count);
    EXPECT_EQ(job.regions[1].expected, QString());
    ASSERT_TRUE(job.regions[1].count);
    EXPECT_EQ(job.regions[1].count->low, 8);
    EXPECT_EQ(job.regions[1].count->high, 10);
    ASSERT_TRUE(job.alignment);
    EXPECT_EQ(job.alignment->settings.patch, QRect(20, 30, 60, 40));
    EXPECT_EQ(job.alignment->settings.shiftX, 50);
    EXPECT_EQ(job.alignment->settings.shiftY, 30);
    EXPECT_EQ(job.alignment->settings.turn, 12);
    EXPECT_EQ(job.alignment->settings.minimumScore, 0.8);
    EXPECT_EQ(job.alignment->patch.cols, 60);
    EXPECT_EQ(job.hash.size(), 64);
}

TEST_F(JobFile, MayLeaveMuchOut)
{
    const Job job = read();
    EXPECT_FALSE(job.alignment);
    EXPECT_FALSE(job.requiresValidation);
    EXPECT_TRUE(job.settings.isEmpty());
}

TEST_F(JobFile, HasAHashOfAllItsFiles)
{
    addAlignment();
    const QString before = read().hash;
    EXPECT_EQ(read().hash, before);
    folder.write(QStringLiteral("notes.txt"), "not of the job");
    EXPECT_EQ(read().hash, before);

    cv::imwrite(folder.file(QStringLiteral("patch.png")).toStdString(), cv::Mat(40, 60, CV_8UC1, cv::Scalar(10)));
    const QString withPatch = read().hash;
    EXPECT_NE(withPatch, before);
    folder.setRegion(0, QStringLiteral("expected"), QStringLiteral("PN:7741-C"));
    EXPECT_NE(read().hash, withPatch);
}

TEST_F(JobFile, SaysAllThatIsMissing)
{
    folder.json = {};
    EXPECT_THAT(faults(),
        ElementsAre("\"name\" is missing or no text", "\"number\" is missing or no whole number from 1 to 65535",
            "\"model\" is missing or no text", "\"regions\" is no list of at least one region"));
}

TEST_F(JobFile, SaysWhichKeysItDoesNotKnow)
{
    folder.json[QStringLiteral("regoins")] = 1;
    folder.setRegion(0, QStringLiteral("expects"), QStringLiteral("A"));
    EXPECT_THAT(faults(), ElementsAre("region 1: \"expects\" is not known here", "\"regoins\" is not known here"));
}

TEST_F(JobFile, RefusesNumbersThatNoPlcCanSay)
{
    for (const QJsonValue& value : {QJsonValue(0), QJsonValue(65536), QJsonValue(1.5), QJsonValue(-1)}) {
        folder.json[QStringLiteral("number")] = value;
        EXPECT_THAT(faults(), ElementsAre("\"number\" is missing or no whole number from 1 to 65535"));
    }
}

TEST_F(JobFile, RefusesNamesThatAreNoModel)
{
    for (const char* const name : {"printed.trt", "ocr_a_b.trt", "../model/ocr_printed_p1_1_v1.trt"}) {
        folder.json[QStringLiteral("model")] = QLatin1String(name);
        EXPECT_THAT(faults(),
            ElementsAre(
                "\"model\": " + std::string(name) + " is no name of an engine file, such as ocr_printed_p1_1_v1.trt"));
    }
}

TEST_F(JobFile, SaysWhatIsWrongWithARegion)
{
    const std::string rect = "region 2: \"rect\" is no list [x, y, width, height] of at least one pixel";
    for (const QJsonValue& value : {QJsonValue(), QJsonValue(QJsonArray{1, 2, 3}), QJsonValue(QJsonArray{1, 2, 0.5, 9}),
             QJsonValue(QJsonArray{1, 2, QStringLiteral("3"), 4})}) {
        folder.setRegion(1, QStringLiteral("rect"), value);
        EXPECT_THAT(faults(), ElementsAre(rect));
    }
    folder.setRegion(1, QStringLiteral("rect"), QJsonArray{1, 2, 30, 40});
    for (const QJsonValue& value : {QJsonValue(QJsonArray{5, 4}), QJsonValue(QJsonArray{-1, 4}), QJsonValue(3)}) {
        folder.setRegion(1, QStringLiteral("count"), value);
        EXPECT_THAT(faults(), ElementsAre("region 2: \"count\" is no list [least, most] of two whole numbers"));
    }
    folder.setRegion(1, QStringLiteral("count"), QJsonArray{1, 4});
    folder.setRegion(1, QStringLiteral("name"), QStringLiteral("part"));
    EXPECT_THAT(faults(), ElementsAre("region 2: \"part\" is the name of another region too"));
    folder.setRegion(1, QStringLiteral("name"), QStringLiteral(" "));
    EXPECT_THAT(faults(), ElementsAre("region 2: \"name\" is missing or no text"));
    folder.setRegion(1, QStringLiteral("name"), QStringLiteral("date"));
    folder.setRegion(1, QStringLiteral("expected"), QStringLiteral("{date:"));
    ASSERT_EQ(faults().size(), 1U);
    EXPECT_THAT(faults()[0], testing::StartsWith("region 2: \"expected\": character "));
    folder.json[QStringLiteral("regions")] = QJsonArray{5};
    EXPECT_THAT(faults(), ElementsAre("region 1 is no object"));
}

TEST_F(JobFile, SaysWhatIsWrongWithTheAlignment)
{
    folder.json[QStringLiteral("alignment")] = QJsonObject{
        {QStringLiteral("shift"), 5}, {QStringLiteral("turn"), QStringLiteral("x")}, {QStringLiteral("a"), 1}};
    EXPECT_THAT(faults(),
        ElementsAre("alignment: \"patch\" is missing or no text",
            "alignment: \"rect\" is no list [x, y, width, height]", "alignment: \"shift\" is no list [x, y] of pixels",
            "alignment: \"turn\" is no number", "alignment: \"a\" is not known here"));
    folder.json[QStringLiteral("alignment")] = 5;
    EXPECT_THAT(faults(), testing::Contains("\"alignment\" is no object"));
    addAlignment();
    QFile::remove(folder.file(QStringLiteral("patch.png")));
    EXPECT_THAT(faults(), ElementsAre(testing::StartsWith("alignment: patch.png: ")));
    cv::imwrite(folder.file(QStringLiteral("patch.png")).toStdString(), cv::Mat(40, 60, CV_8UC3, cv::Scalar(9, 0, 0)));
    EXPECT_THAT(faults(), ElementsAre("alignment: patch.png: the patch is not a grey picture"));
}

TEST_F(JobFile, SaysWhatIsWrongWithOtherValues)
{
    folder.json[QStringLiteral("requireValidation")] = QStringLiteral("yes");
    EXPECT_THAT(faults(), ElementsAre("\"requireValidation\" is neither true nor false"));
    folder.json.remove(QStringLiteral("requireValidation"));
    folder.json[QStringLiteral("text")] = QJsonObject{{QStringLiteral("dayBegins"), 6}};
    EXPECT_THAT(faults(), ElementsAre(testing::StartsWith("\"text\": ")));
    folder.json.remove(QStringLiteral("text"));
    folder.json[QStringLiteral("source")] = 5;
    EXPECT_THAT(faults(), ElementsAre("\"source\" is no object"));
}

TEST_F(JobFile, StaysInItsFolder)
{
    for (const char* const name : {"../settings.json", "/etc/passwd", ".."}) {
        folder.json[QStringLiteral("settings")] = QLatin1String(name);
        EXPECT_THAT(faults(), ElementsAre(std::string(name) + ": the job's files lie in its own folder"));
    }
}

TEST_F(JobFile, MustBeJson)
{
    folder.write(QStringLiteral("job.json"), "[]");
    EXPECT_THAT(readJob(folder.path()).error().sentences,
        ElementsAre(folder.file(QStringLiteral("job.json")) + QStringLiteral(": no JSON object")));
    folder.write(QStringLiteral("job.json"), "{");
    EXPECT_THAT(readJob(folder.path()).error().sentences.first().toStdString(),
        testing::StartsWith(folder.file(QStringLiteral("job.json")).toStdString()));
    EXPECT_EQ(readJob(QStringLiteral("/nonexistent")).error().sentences.size(), 1);
}

} // namespace
} // namespace scribo::line
