#include "rules/expectedtext.h"

#include "rulestesting.h"

namespace scribo::line {
namespace {

using testing::inBerlin;
using testing::localTime;

TEST(ExpectedText, AnswersAtTheTrigger)
{
    TextSettings settings = inBerlin();
    settings.dayBegin = QTime(6, 0);
    const auto expected = ExpectedText::create(QStringLiteral("{date:dd.MM.} {lot} {counter}"), settings);
    ASSERT_TRUE(expected) << expected.error().message;
    EXPECT_TRUE(expected->usesLot() && expected->usesCounter());
    EXPECT_FALSE(expected->hasMatch());
    EXPECT_EQ(expected->source(), QStringLiteral("{date:dd.MM.} {lot} {counter}"));

    const auto first = expected->at({localTime(QStringLiteral("2026-11-21T05:59")), QStringLiteral("A1"), 7});
    ASSERT_TRUE(first);
    EXPECT_EQ(first->text(), QStringLiteral("20.11. A1 7"));
    EXPECT_FALSE(first->hasMatch());
    const auto second = expected->at({localTime(QStringLiteral("2026-11-21T06:00")), QStringLiteral("A2"), 8});
    ASSERT_TRUE(second);
    EXPECT_EQ(second->text(), QStringLiteral("21.11. A2 8"));
    const auto third = expected->at({localTime(QStringLiteral("2026-11-21T06:00")), QString(), 8});
    ASSERT_FALSE(third);
    EXPECT_EQ(third.error().message, "no lot is set");
}

TEST(ExpectedText, TellsTheEngineToJudgeMatchParts)
{
    const auto expected = ExpectedText::create(QStringLiteral("SN {match:\\d+}"), inBerlin());
    ASSERT_TRUE(expected);
    EXPECT_TRUE(expected->hasMatch());
    const auto expectation = expected->at({localTime(QStringLiteral("2026-11-21T05:59")), QString(), {}});
    ASSERT_TRUE(expectation);
    EXPECT_TRUE(expectation->hasMatch());
    EXPECT_EQ(expectation->patterns().size(), 1U);
}

TEST(ExpectedText, FailsOnFaultsOfTemplateAndSettings)
{
    EXPECT_EQ(ExpectedText::create(QString(), {}).error().message, "the template is empty");
    EXPECT_EQ(ExpectedText::create(QStringLiteral("{shift}{date:M;month=t}"), {}).error().message,
        "there are no shifts; there is no table \"t\"");
}

} // namespace
} // namespace scribo::line
