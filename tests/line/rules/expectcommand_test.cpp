#include "rules/expectcommand.h"

#include "rulestesting.h"

namespace scribo::line {
namespace {

class ExpectCommand : public ::testing::Test
{
protected:
    ExpectCommand() { options.settings = testing::inBerlin(); }

    std::string run(const char* text) const
    {
        const auto result = expectCommand(
            QString::fromUtf8(text), options, [] { return testing::localTime(QStringLiteral("2026-11-21T12:34:56")); });
        return result ? result->toStdString() : "failed: " + result.error().message;
    }

    std::string runAt(const char* time, const char* text = "{date:dd.MM.yyyy HH:mm:ss}")
    {
        options.at = QString::fromUtf8(time);
        return run(text);
    }

    ExpectOptions options;
};

TEST_F(ExpectCommand, TakesTheClock)
{
    EXPECT_EQ(run("{date:dd.MM.yyyy HH:mm:ss}"), "21.11.2026 12:34:56\n");
}

TEST_F(ExpectCommand, TakesATimeThatIsGiven)
{
    EXPECT_EQ(runAt("2026-11-21T05:59"), "21.11.2026 05:59:00\n");
    EXPECT_EQ(runAt("2026-11-21T05:59:07"), "21.11.2026 05:59:07\n");
    EXPECT_EQ(runAt("2026-10-25T02:30"), "25.10.2026 02:30:00\n");
    EXPECT_EQ(runAt("2038-03-28T03:00"), "28.03.2038 03:00:00\n");
    EXPECT_EQ(runAt("2026-11-21T05:59", "EXP {date:dd.MM.yyyy;+18 months;end of month;day begins at 06:00}"),
        "EXP 31.05.2028\n");
}

TEST_F(ExpectCommand, RefusesTimesThatItCannotRead)
{
    EXPECT_EQ(runAt("tomorrow"), "failed: the time is \"tomorrow\", expected one like 2026-11-21T05:59");
    EXPECT_EQ(runAt("2026-11-21"), "failed: the time is \"2026-11-21\", expected one like 2026-11-21T05:59");
    EXPECT_EQ(
        runAt("2026-02-30T05:59"), "failed: the time is \"2026-02-30T05:59\", expected one like 2026-11-21T05:59");
    EXPECT_EQ(
        runAt("2026-11-21T05:59Z"), "failed: the time is \"2026-11-21T05:59Z\", expected one like 2026-11-21T05:59");
    EXPECT_EQ(runAt("2026-03-29T02:30"),
        "failed: the clock of Europe/Berlin never shows 2026-03-29T02:30: it is set forward over it");
}

TEST_F(ExpectCommand, NeedsATimeZone)
{
    options.settings.zone = QTimeZone();
    EXPECT_EQ(run("{date:dd}"), "failed: the time zone is not valid");
}

TEST_F(ExpectCommand, ShowsEveryTextOfTheGraceWindow)
{
    options.settings.grace = std::chrono::minutes(5);
    EXPECT_EQ(runAt("2026-11-21T00:03", "{date:dd.MM.}"), "21.11.\n20.11.\n");
}

TEST_F(ExpectCommand, TakesLotAndCounter)
{
    EXPECT_EQ(run("{lot}"), "failed: no lot is set");
    options.lot = QStringLiteral("A4828");
    options.counter = 27;
    EXPECT_EQ(run("{lot}/{counter:0000}"), "A4828/0027\n");
}

TEST_F(ExpectCommand, SaysWhatIsWrongWithTheTemplate)
{
    EXPECT_EQ(run("{dat:dd}"), "failed: character 2: \"dat\" is unknown; expected date, lot, counter, shift or match");
    EXPECT_EQ(run("{shift}"), "failed: there are no shifts");
}

} // namespace
} // namespace scribo::line
