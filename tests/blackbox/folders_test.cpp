// Reads folders of pictures through the loaded plug-in and holds each folder to a number of right readings and a number
// of misreadings. A misreading is the worse fault: the line believes it.
//
// The counts are what the shipped model does, less a small margin for processors whose kernels round differently. The
// folders below pictures/ are drawn by draw-pictures beside this file, in fonts that the model never saw.

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
    const char* path; ///< in the repository
    int right; ///< at least
    int misread; ///< at most, among readings that are not empty
};

std::ostream& operator<<(std::ostream& stream, const Folder& folder)
{
    return stream << folder.path;
}

QJsonObject readObject(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QJsonDocument::fromJson(file.readAll()).object();
}

std::vector<Job> readJobs(const QString& folder)
{
    const QJsonObject pictures = readObject(folder + "/jobs.json");
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
    cv::Mat stored = cv::imread(path.toStdString(), cv::IMREAD_UNCHANGED);
    EXPECT_FALSE(stored.empty()) << path.toStdString();
    if (stored.channels() != 3) {
        return stored;
    }
    cv::Mat picture;
    cv::cvtColor(stored, picture, cv::COLOR_BGR2RGB);
    return picture;
}

/// The characters of a text, each that may stand for others as the first of its group. Groups are disjoint.
QString firstOfGroups(QString text)
{
    const QJsonArray groups = readObject("model/ocr_printed_p1_1.json")["classes"].toArray();
    for (QChar& character : text) {
        for (const QJsonValue& group : groups) {
            const QString name = group["name"].toString();
            character = name.contains(character) ? name[0] : character;
        }
    }
    return text;
}

/// What each wrong print of the samples really says.
const std::map<QString, QString> wrongPrints = {{"LOT:K3358", "LOT:K3356"}, {"2027-05-31", "2027-06-31"}};

class Folders : public testing::TestWithParam<Folder>
{
};

} // namespace

TEST_P(Folders, AreReadAndJudged)
{
    LoadedPlugin plugin;
    ASSERT_NE(plugin.root(), nullptr) << plugin.errorString().toStdString();
    ScriptedTool tool;
    const auto processor = plugin.makeInstance(&tool);
    setParameter(*processor, 9, QJsonArray{false, true, false});

    int right = 0;
    int misread = 0;
    QString faults;
    for (const Job& job : readJobs(QStringLiteral(SCRIBO_SOURCE_FOLDER "/") + GetParam().path)) {
        tool.picture = readPicture(job.picture);
        tool.taughtRegions = {job.rect};
        setParameter(*processor, 10, job.reference);
        processor->process(&tool, 0);

        const QVariantMap record = processor->resultRecord(0);
        const QString text = record["resString"].toString();
        const bool isOk = processor->isResultOk(0);
        const auto wrong = wrongPrints.find(job.reference);
        const QString printed = wrong == wrongPrints.end() ? job.reference : wrong->second;
        right += text == printed;
        misread += !text.isEmpty() && text != printed;
        if (text != printed) {
            faults += QString("\n%1 says %2, read: %3").arg(job.picture, printed, text);
        }
        EXPECT_EQ(record["charCount"].toInt(), text.length()) << job.picture.toStdString();
        EXPECT_EQ(isOk, firstOfGroups(text) == firstOfGroups(job.reference)) << job.picture.toStdString();
        EXPECT_FALSE(isOk && wrong != wrongPrints.end()) << "a wrong print passed: " << job.picture.toStdString();
    }
    RecordProperty("right", right);
    RecordProperty("misread", misread);
    EXPECT_GE(right, GetParam().right) << faults.toStdString();
    EXPECT_LE(misread, GetParam().misread) << faults.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Every, Folders,
    testing::Values(Folder{"Samples", "samples", 15, 0}, Folder{"Clean", "tests/blackbox/pictures/clean", 22, 2},
        Folder{"Moderate", "tests/blackbox/pictures/moderate", 21, 3},
        Folder{"Hard", "tests/blackbox/pictures/hard", 18, 6},
        Folder{"Plates", "tests/blackbox/pictures/plates", 21, 3}),
    [](const testing::TestParamInfo<Folder>& folder) { return std::string(folder.param.name); });
