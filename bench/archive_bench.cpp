// What the picture archive costs: the inspecting thread, when saving is switched on; and the disk writers, against
// plain OpenCV that writes the same pictures. Each pair is measured in turns, and medians are compared, so that
// whatever else the machine does falls on both sides.

#include "benchhost.h"
#include "picturearchive.h"
#include "pluginsettings.h"
#include "scribo.h"
#include "scriptedtool.h"

#include <QDir>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QThreadPool>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using Seconds = std::chrono::duration<double>;

constexpr int rounds = 15;
constexpr int batch = PictureQueue::maxWaiting; ///< as many as may wait, so that none is dropped

template <typename Work>
double timed(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return Seconds(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> times)
{
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

void fillFolder(const QString& folder, int count)
{
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        QFile(folder + QString::number(i)).open(QIODevice::WriteOnly);
    }
}

/// A picture of a printed text, three channels in red, green, blue order.
cv::Mat printedPicture(cv::Size size)
{
    cv::Mat picture(size, CV_8UC3, cv::Scalar::all(210));
    cv::putText(picture, "LOT 4827 A", {10, size.height / 2}, cv::FONT_HERSHEY_SIMPLEX, 1.0, cv::Scalar::all(30), 2);
    return picture;
}

/// One inspection of one region, with and without saving, while the folder already holds `files` files.
void benchInspection(const LoadedPlugin& plugin, int files)
{
    const QTemporaryDir directory;
    ScriptedTool tool;
    tool.directory = directory.path() + '/';
    tool.picture = printedPicture({640, 480});
    tool.taughtRegions = {QRectF(0, 200, 320, 80)};
    const auto station = plugin.makeInstance(&tool);
    const QString folder = tool.directory + "AISavePic/printed_p1_1_C1_T1/OK/";

    std::vector<double> times[2];
    for (int round = 0; round < rounds; ++round) {
        for (const bool saving : {false, true}) {
            setParameter(*station, 4, QJsonArray{saving, false});
            fillFolder(folder, files);
            for (int i = 0; i < batch; ++i) {
                times[saving].push_back(timed([&] { station->process(&tool, 0); }));
            }
            QThreadPool::globalInstance()->waitForDone();
        }
    }
    const double without = median(times[0]);
    const double with = median(times[1]);
    std::printf("one region of 320 x 80, %3d files in the folder: %7.1f us without saving, %7.1f us with, ratio %.3f\n",
        files, 1e6 * without, 1e6 * with, with / without);
}

/// Twenty pictures through queue and writers, and the same through cv::imwrite in a loop.
void benchWriters(cv::Size size, int type)
{
    const QTemporaryDir directory;
    ScriptedTool tool;
    PluginSettings settings;
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    cv::Mat picture = printedPicture(size);
    if (type == CV_8UC1) {
        cv::cvtColor(picture, picture, cv::COLOR_RGB2GRAY);
    }
    const auto path
        = [&](const char* folder, int i) { return directory.filePath(folder + QString::number(i) + ".bmp"); };

    std::vector<double> ours;
    std::vector<double> plain;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(timed([&] {
            for (int i = 0; i < batch; ++i) {
                archive.queuePicture(&tool, picture, path("archive", i));
            }
            QThreadPool::globalInstance()->waitForDone();
        }));
        plain.push_back(timed([&] {
            for (int i = 0; i < batch; ++i) {
                cv::imwrite(path("opencv", i).toStdString(), picture);
            }
        }));
    }
    const double megabytes = static_cast<double>(picture.total() * picture.elemSize()) / 1e6;
    const auto perSecond = [](double seconds) { return batch / seconds; };
    const double archiveRate = perSecond(median(ours));
    const double plainRate = perSecond(median(plain));
    std::printf("%4d x %4d, %d channels: archive %7.0f pictures/s %7.1f MB/s, cv::imwrite %7.0f pictures/s %7.1f MB/s, "
                "ratio %.2f\n",
        size.width, size.height, picture.channels(), archiveRate, archiveRate * megabytes, plainRate,
        plainRate * megabytes, archiveRate / plainRate);
}

} // namespace

int main(int argc, char** argv)
{
    const BenchHost host(argc, argv);
    const LoadedPlugin& plugin = host.plugin();
    if (plugin.root() == nullptr) {
        std::fprintf(stderr, "%s\n", qPrintable(plugin.errorString()));
        return 1;
    }
    for (const int files : {0, 500, 950}) {
        benchInspection(plugin, files);
    }
    std::printf("%d writers\n", QThreadPool::globalInstance()->maxThreadCount());
    benchWriters({320, 80}, CV_8UC3);
    benchWriters({640, 480}, CV_8UC3);
    benchWriters({2448, 2048}, CV_8UC1);
    benchWriters({2448, 2048}, CV_8UC3);
    return 0;
}
