#include "blackbox/loadedplugin.h"
#include "residentmemory.h"
#include "sanitizers.h"
#include "scriptedtool.h"
#include "testpictures.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThreadPool>

#include <gtest/gtest.h>

namespace {

constexpr int pictureCount = underSanitizer ? 3000 : 50000;
constexpr int settledAfter = pictureCount / 10;
constexpr int limit = 1000; ///< the default

QJsonObject stateOf(ProcessorInterface& processor, int number)
{
    QJsonObject state;
    processor.params()->at(number - 1)->writeJson(state);
    return state;
}

} // namespace

TEST(ArchiveSoak, AStationThatSavesEveryPictureKeepsItsLimitAndItsMemory)
{
    const LoadedPlugin plugin;
    ASSERT_NE(plugin.root(), nullptr) << plugin.errorString().toStdString();
    const QTemporaryDir directory;
    ScriptedTool tool;
    tool.directory = directory.path() + '/';
    tool.picture = numberedPicture(7, {96, 48});
    tool.taughtRegions = {QRectF(3, 5, 61, 32)};
    const auto station = plugin.makeInstance(&tool);
    setParameter(*station, 3, QJsonArray{false, true}); // the model is not asked: this is about pictures
    setParameter(*station, 4, QJsonArray{true, false});

    qint64 settled = 0;
    for (int i = 0; i < pictureCount; ++i) {
        station->process(&tool, 0);
        if (i <= limit) {
            QThreadPool::globalInstance()->waitForDone(); // so that the count is exact and nothing is dropped
        }
        if (i == settledAfter) {
            settled = residentBytes();
        }
    }
    if (!underSanitizer) {
        EXPECT_LT(residentBytes() - settled, 8 << 20);
    }

    EXPECT_EQ(stateOf(*station, 5)["values"].toInt(), limit);
    EXPECT_TRUE(station->isResultOk(-1));
    const QString folder = directory.path() + "/AISavePic/printed_p1_1_C1_T1/OK/";
    const QStringList files = filesIn(folder);
    ASSERT_EQ(files.size(), limit);
    const cv::Mat region = tool.picture(cv::Rect(3, 5, 61, 32));
    for (const QString& file : files) {
        EXPECT_TRUE(fileShows(folder + file, region)) << file.toStdString();
    }
}
