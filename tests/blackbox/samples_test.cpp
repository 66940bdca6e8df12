// Reads folders of pictures through the loaded plug-in and holds each folder to a number of right
// readings and a number of misreadings. A misreading is the worse fault: the line believes it.

#include "loadedplugin.h"
#include "scriptedtool.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <map>

namespace {

struct Job
{
    QString picture;
    QRectF rect;
    QString reference;
};

struct Folder
{
    const char* name;
    int right; ///< at least
    int misread; ///< at most, among readings that are not empty
};

std::vector<Job> readJobs(const QString& folder)
{
    QFile file(folder + "/jobs.json");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    const QJsonObject pictures = QJsonDocument::fromJson(file.readAll()).object();
    std::vector<Job> jobs;
    for (auto picture = pictures.begin(); picture != pictures.end(); ++picture) {
        for (const QJsonValue& region : picture.value().toArray()) {
            const QJsonArray rect = region["rect"].toArray();
            jobs.push_back({folder + "/" + picture.key(),
                QRectF(rect[0].toDouble(), rect[1].toDouble(), rect[2].toDouble(), rect[3].toDouble()),
                region["reference"].toString()});
        }
    }
    return jobs;
}

cv::Mat readPicture(const QString& path)
{
    const cv::Mat stored = cv::imread(path.toStdString(), cv::IMREAD_UNCHANGED);
    EXPECT_FALSE(stored.empty()) << path.toStdString();
    if (stored.channels() != 3) {
        return stored;
    }
    cv::Mat picture;
    cv::cvtColor(stored, picture, cv::COLOR_BGR2RGB);
    return picture;
}

class Samples : public testing::TestWithParam<Folder>
{
};

} // namespace

// What each wrong print of the samples really says.
static const std::map<QString, QString> wrongPrints = {{"LOT:K3358", "LOT:K3356"}, {"2027-05-31", "2027-06-31"}};

TEST_P(Samples, AreReadAndJudged)
{
    LoadedPlugin plugin;
    ASSERT_NE(plugin.root(), nullptr) << plugin.errorString().toStdString();
    ScriptedTool tool;
    const auto processor = plugin.makeInstance(&tool);
    setParameter(*processor, 9, QJsonArray{false, true, false});

    int right = 0;
    int misread = 0;
    for (const Job& job : readJobs(QStringLiteral(SCRIBO_SOURCE_FOLDER "/") + GetParam().name)) {
        tool.picture = readPicture(job.picture);
        tool.taughtRegions = {job.rect};
        setParameter(*processor, 10, job.reference);
        processor->process(&tool, 0);

        const QVariantMap record = processor->resultRecord(0);
        const QString text = record["resString"].toString();
        const auto wrong = wrongPrints.find(job.reference);
        const QString printed = wrong == wrongPrints.end() ? job.reference : wrong->second;
        right += text == printed;
        misread += !text.isEmpty() && text != printed;
        EXPECT_EQ(record["charCount"].toInt(), text.length()) << job.picture.toStdString();
        EXPECT_EQ(processor->isResultOk(0), text == job.reference) << job.picture.toStdString();
        EXPECT_FALSE(processor->isResultOk(0) && wrong != wrongPrints.end())
            << "a wrong print passed: " << job.picture.toStdString();
    }
    EXPECT_GE(right, GetParam().right);
    EXPECT_LE(misread, GetParam().misread);
}

INSTANTIATE_TEST_SUITE_P(Folders, Samples, testing::Values(Folder{"samples", 15, 0}),
    [](const testing::TestParamInfo<Folder>& folder) { return std::string(folder.param.name); });
