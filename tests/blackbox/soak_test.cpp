// Four stations on four threads, all reading with the one detector of their model.

#include "archive/sanitizers.h"
#include "loadedplugin.h"
#include "residentmemory.h"
#include "scriptedtool.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr int stationCount = 4;
constexpr int itemsEach = underSanitizer ? 100 : 5000;
constexpr int settledAfter = 1000; ///< items of all stations

cv::Mat printed(const char* text)
{
    cv::Mat picture(36, 130, CV_8UC1, cv::Scalar(225));
    cv::putText(picture, text, {10, 27}, cv::FONT_HERSHEY_DUPLEX, 0.9, cv::Scalar(25), 2, cv::LINE_AA);
    return picture;
}

/// One station with its own picture, and what it read from it when it was alone.
struct Station
{
    ScriptedTool tool;
    std::unique_ptr<ProcessorInterface> processor;
    QString alone;
    int crossed = 0;

    QString read()
    {
        processor->process(&tool, 0);
        return processor->resultRecord(0)["resString"].toString();
    }
};

} // namespace

TEST(Soak, FourStationsShareADetectorAndNoResultIsCrossed)
{
    const LoadedPlugin plugin;
    ASSERT_NE(plugin.root(), nullptr) << plugin.errorString().toStdString();
    const char* const texts[stationCount] = {"A4827", "7310", "KX55", "902B4"};
    std::vector<Station> stations(stationCount);
    for (int i = 0; i < stationCount; ++i) {
        Station& station = stations[static_cast<std::size_t>(i)];
        station.tool.picture = printed(texts[i]);
        station.tool.taughtRegions = {QRectF(0, 0, station.tool.picture.cols, station.tool.picture.rows)};
        station.processor = plugin.makeInstance(&station.tool);
        station.alone = station.read();
        for (int other = 0; other < i; ++other) {
            ASSERT_NE(station.alone, stations[static_cast<std::size_t>(other)].alone) << "or nothing could be crossed";
        }
    }

    std::atomic<int> items{0};
    std::atomic<qint64> settled{0};
    std::vector<std::thread> threads;
    for (Station& station : stations) {
        threads.emplace_back([&] {
            for (int i = 0; i < itemsEach; ++i) {
                station.crossed += station.read() == station.alone ? 0 : 1;
                if (++items == settledAfter) {
                    settled = residentBytes();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Station& station : stations) {
        EXPECT_EQ(station.crossed, 0) << station.alone.toStdString();
    }
    EXPECT_EQ(items, stationCount * itemsEach);
    if (!underSanitizer) {
        EXPECT_LT(residentBytes() - settled, 4 << 20);
    }
}
