#include "rules/expectedtext.h"
#include "rules/textcomparison.h"
#include "rulestesting.h"

#include <atomic>
#include <thread>

namespace scribo::line {
namespace {

TEST(RulesOnThreads, ShareOneExpectedText)
{
    TextSettings settings = testing::inBerlin();
    settings.grace = std::chrono::minutes(10);
    const auto expected
        = ExpectedText::create(QStringLiteral("{date:dd.MM.} SN {match:[A-Z]\\d+} {counter}"), settings);
    ASSERT_TRUE(expected) << expected.error().message;
    const QDateTime now(QDate(2026, 11, 20), QTime(22, 55), Qt::UTC);
    std::atomic<int> judged{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int item = 0; item < 200; ++item) {
                const auto expectation = expected->at({now, QString(), item});
                const QString reading = QStringLiteral("21.11. SN A%1 %2").arg(thread).arg(item);
                judged += expectation && compareText(reading, *expectation, {}).isOk() ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(judged, 800);
}

} // namespace
} // namespace scribo::line
