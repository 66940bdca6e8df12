#include "inspectorfixture.h"

#include <thread>
#include <vector>

using namespace scribo::host;

namespace {

using InspectorOnThreads = InspectorFixture;

constexpr int pictures = 50;

} // namespace

TEST_F(InspectorOnThreads, WorksOnTheThreadThatMadeIt)
{
    const auto plugin = ProcessorPlugin::load(FAKE_PROCESSOR_FILE);
    ASSERT_EQ(errorText(plugin), "");
    station.write("readings", "@pixel\n");
    std::vector<std::thread> threads;
    for (int grey = 1; grey <= 4; ++grey) {
        threads.emplace_back([&plugin, grey] {
            const auto made = Inspector::make(*plugin);
            ASSERT_EQ(errorText(made), "");
            const cv::Mat picture(50, 100, CV_8UC1, cv::Scalar(grey));
            for (int i = 0; i < pictures; ++i) {
                const InspectionResult result = (*made)->inspect(picture, {{QRectF(0, 0, 9, 9), {}, {}}});
                EXPECT_EQ(result.regions[0].text, QString::number(grey));
            }
            EXPECT_EQ((*made)->overlay().size(), QSize(100, 50));
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
