#include "align/partfinder.h"
#include "scenes.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace scribo::line {
namespace {

TEST(FindingOnThreads, GivesTheSameOnAllAtOnce)
{
    const scenes::Label label(3);
    AlignmentSettings settings;
    settings.patch = label.patch();
    const auto finder = PartFinder::teach(label.taughtPicture(1), settings);
    ASSERT_TRUE(finder);
    PartPose truth;
    truth.pivot = label.pivot();
    truth.shift = QPointF(31.25, -17.5);
    truth.turn = 7.5;
    const cv::Mat picture = label.picture(truth, 4, {});
    const auto expected = finder->find(picture);
    ASSERT_TRUE(expected);

    std::vector<tl::expected<PartPose, NotFound>> found(4);
    std::vector<std::thread> threads;
    for (auto& result : found) {
        threads.emplace_back([&finder, &picture, &result] {
            for (int i = 0; i < 3; ++i) {
                result = finder->find(picture);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& result : found) {
        ASSERT_TRUE(result);
        EXPECT_EQ(result->shift, expected->shift);
        EXPECT_EQ(result->turn, expected->turn);
        EXPECT_EQ(result->score, expected->score);
    }
}

} // namespace
} // namespace scribo::line
