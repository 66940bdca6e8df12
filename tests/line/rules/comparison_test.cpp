#include "rules/textcomparison.h"

#include "rulestesting.h"

#include <tuple>

namespace scribo::line {
namespace {

using testing::inBerlin;
using testing::localTime;

Expectation expectation(
    const QString& text, const char* at = "2026-11-21T12:00", const TextSettings& settings = inBerlin())
{
    const auto parsed = TextTemplate::parse(text);
    EXPECT_TRUE(parsed) << parsed.error().message;
    const auto expanded = parsed->expand({localTime(QString::fromUtf8(at)), QStringLiteral("A4828"), 27}, settings);
    EXPECT_TRUE(expanded) << expanded.error().message;
    return *expanded;
}

TextComparison compared(const char* text, const QString& reading, const CharacterRules& characters = {})
{
    return compareText(reading, expectation(QString::fromUtf8(text)), characters);
}

/// The reason, when the difference is of this kind.
std::string reason(
    const char* text, const char* reading, TextDifference difference, const CharacterRules& characters = {})
{
    const TextComparison result = compared(text, QString::fromUtf8(reading), characters);
    EXPECT_EQ(result.difference, difference) << result.reason.toStdString();
    EXPECT_EQ(result.isOk(), result.reason.isEmpty());
    return result.reason.toStdString();
}

const char* const date = "EXP {date:dd.MM.yyyy} {lot}"; // EXP 21.11.2026 A4828

TEST(Comparison, AcceptsWhatIsExpected)
{
    const TextComparison result = compared(date, QStringLiteral("EXP 21.11.2026 A4828"));
    EXPECT_TRUE(result.isOk());
    EXPECT_EQ(result.reason, QString());
    EXPECT_EQ(result.expected, QStringLiteral("EXP 21.11.2026 A4828"));
}

TEST(Comparison, NamesThePartThatDiffers)
{
    const auto text = [](const char* reading) { return reason(date, reading, TextDifference::text); };
    EXPECT_EQ(text("EXP 21.10.2026 A4828"), "month is 10, expected 11");
    EXPECT_EQ(text("EXP 21.11.2026 A4827"), "lot is A4827, expected A4828");
    EXPECT_EQ(text("EXP 20.11.2026 A4828"), "day is 20, expected 21");
    EXPECT_EQ(text("EXP 21.11.2025 A4828"), "year is 2025, expected 2026");
    EXPECT_EQ(text("EXF 21.11.2026 A4828"), "text is \"EXF \", expected \"EXP \"");
    EXPECT_EQ(text("EXP 21-11.2026 A4828"), "text is -, expected .");
    EXPECT_EQ(text("EXP 21.10.2025 A4827"), "month is 10, expected 11");
}

TEST(Comparison, NamesEveryKindOfPart)
{
    for (const auto& [text, reading, sentence] : {
             std::tuple("{date:ww}", "46", "week is 46, expected 47"),
             std::tuple("{date:e}", "1", "weekday is 1, expected 6"),
             std::tuple("{date:DDD}", "324", "day of the year is 324, expected 325"),
             std::tuple("{date:q}", "1", "quarter is 1, expected 4"),
             std::tuple("{date:HH}", "13", "hour is 13, expected 12"),
             std::tuple("{date:HH:mm}", "12:01", "minute is 01, expected 00"),
             std::tuple("{date:HH:mm:ss}", "12:00:01", "second is 01, expected 00"),
             std::tuple("{date:h a}", "12 AM", "AM or PM is AM, expected PM"),
             std::tuple("{date:MMM;upper}", "OCT", "month is OCT, expected NOV"),
             std::tuple("{counter:0000}", "0028", "counter is 0028, expected 0027"),
         }) {
        EXPECT_EQ(reason(text, reading, TextDifference::text), sentence);
    }
    TextSettings settings = inBerlin();
    settings.shifts[QTime(6, 0)] = QStringLiteral("E");
    const Expectation shift = expectation(QStringLiteral("{shift}"), "2026-11-21T12:00", settings);
    EXPECT_EQ(compareText(QStringLiteral("N"), shift, {}).reason, QStringLiteral("shift is N, expected E"));
}

TEST(Comparison, CountsCharactersTooManyOrTooFew)
{
    const auto count = [](const char* reading) { return reason(date, reading, TextDifference::count); };
    EXPECT_EQ(count("EXP 21.11.2026 A4828XX"), "2 characters too many: XX at the end is not expected");
    EXPECT_EQ(count("*EXP 21.11.2026 A4828"), "1 character too many: * at the start is not expected");
    EXPECT_EQ(count("EXP 21.1.2026 A4828"), "1 character too few: month is 1, expected 11");
    EXPECT_EQ(count("EXP 21.111.2026 A4828"), "1 character too many: month is 111, expected 11");
    EXPECT_EQ(count("EXP 21.11.2026 A482"), "1 character too few: lot is A482, expected A4828");
    EXPECT_EQ(count("EXP 21.11.2026 "), "5 characters too few: lot is missing, expected A4828");
    EXPECT_EQ(count("21.11.2026 A4828"), "4 characters too few: text is missing, expected \"EXP \"");
    EXPECT_EQ(count("EXP 21.10.202 A4828"), "1 character too few: month is 10, expected 11");
    EXPECT_EQ(count("EXP 521.11.2026 A4828"), "1 character too many: day is 521, expected 21");
    EXPECT_EQ(count(""), "nothing was read");
    EXPECT_EQ(compared(date, QString(257, QLatin1Char('1'))).reason,
        QStringLiteral("257 characters were read, which is more than can be compared"));
}

TEST(Comparison, AlignsReadingsOfTheRightLengthToo)
{
    EXPECT_EQ(reason(date, "XP 21.11.2026 A48281", TextDifference::text), "text is \"XP \", expected \"EXP \"");
}

TEST(Comparison, LetsLookAlikesStandForOneAnother)
{
    const CharacterRules characters{{QStringLiteral("0Oo"), QStringLiteral("1I")}, QString()};
    EXPECT_EQ(reason("{date:ddMMyyyy}", "2III2O26", TextDifference::none, characters), "");
    EXPECT_EQ(reason("{date:ddMMyyyy}", "2III2O2O", TextDifference::text, characters), "year is 2O2O, expected 2026");
    EXPECT_EQ(reason("{date:ddMMyyyy}", "2III2O2", TextDifference::count, characters),
        "1 character too few: year is 2O2, expected 2026");
}

TEST(Comparison, LeavesIgnoredCharactersOutOfBothSides)
{
    const CharacterRules characters{{}, QStringLiteral(" .")};
    EXPECT_EQ(reason(date, "EXP21.112026A4828", TextDifference::none, characters), "");
    EXPECT_EQ(reason(date, "EXP 21.10.2026 A4828", TextDifference::text, characters), "month is 10, expected 11");
    EXPECT_EQ(compared(date, QStringLiteral("X"), characters).expected, QStringLiteral("EXP 21.11.2026 A4828"));
}

TEST(Comparison, TakesTheNearestOfSeveralTexts)
{
    TextSettings settings = inBerlin();
    settings.grace = std::chrono::minutes(10);
    const Expectation both = expectation(QStringLiteral("{date:dd.MM.} {lot}"), "2026-11-21T00:05", settings);
    EXPECT_TRUE(compareText(QStringLiteral("20.11. A4828"), both, {}).isOk());
    EXPECT_EQ(compareText(QStringLiteral("20.11. A4828"), both, {}).expected, QStringLiteral("20.11. A4828"));
    EXPECT_TRUE(compareText(QStringLiteral("21.11. A4828"), both, {}).isOk());
    EXPECT_EQ(
        compareText(QStringLiteral("20.11. A4827"), both, {}).reason, QStringLiteral("lot is A4827, expected A4828"));
    EXPECT_EQ(
        compareText(QStringLiteral("21.11. A4827"), both, {}).reason, QStringLiteral("lot is A4827, expected A4828"));
    EXPECT_EQ(compareText(QStringLiteral("19.11. A4828"), both, {}).reason, QStringLiteral("day is 19, expected 21"));
    EXPECT_EQ(compareText(QString(), both, {}).expected, QStringLiteral("21.11. A4828"));
}

const char* const serial = "SN {match:[A-Z]\\d{4}} {date:MM.yyyy}"; // SN A1234 11.2026

TEST(MatchComparison, AcceptsWhatFits)
{
    EXPECT_EQ(reason(serial, "SN A1234 11.2026", TextDifference::none), "");
    EXPECT_EQ(compared(serial, QStringLiteral("SN A1234 11.2026")).expected,
        QStringLiteral("SN {match:[A-Z]\\d{4}} 11.2026"));
    EXPECT_EQ(reason(serial, "5N A1234 11.2O26", TextDifference::none,
                  {{QStringLiteral("5S"), QStringLiteral("0O")}, QString()}),
        "");
}

TEST(MatchComparison, NamesThePartThatDiffers)
{
    EXPECT_EQ(reason(serial, "SN A123 11.2026", TextDifference::pattern), "A123 does not fit [A-Z]\\d{4}");
    EXPECT_EQ(reason(serial, "SN  11.2026", TextDifference::pattern), "\"\" does not fit [A-Z]\\d{4}");
    EXPECT_EQ(reason(serial, "SN A1234 10.2026", TextDifference::text), "month is 10, expected 11");
    EXPECT_EQ(reason(serial, "SM A1234 11.2026", TextDifference::text), "text is \"SM \", expected \"SN \"");
    EXPECT_EQ(reason(serial, "SN A123 10.2026", TextDifference::pattern), "A123 does not fit [A-Z]\\d{4}");
    EXPECT_EQ(reason(serial, "SN A1234 11.2026X", TextDifference::text), "X at the end is not expected");
    EXPECT_EQ(reason(serial, "-SN A1234 11.2026", TextDifference::text), "- at the start is not expected");
    EXPECT_EQ(reason(serial, "", TextDifference::count), "nothing was read");
}

TEST(MatchComparison, DoesNotLetLookAlikesIntoThePattern)
{
    const CharacterRules characters{{QStringLiteral("0O")}, QString()};
    EXPECT_EQ(reason("{match:\\d{4}}", "1O34", TextDifference::pattern, characters), "1O34 does not fit \\d{4}");
}

TEST(MatchComparison, TriesEveryWayToDivideTheReading)
{
    const char* const two = "{match:[A-Z-]+}-{match:[0-9-]+}";
    EXPECT_EQ(reason(two, "A-B-1-2", TextDifference::none), "");
    EXPECT_EQ(reason(two, "---", TextDifference::none), "");
    EXPECT_EQ(reason(two, "A-B-C", TextDifference::pattern), "B-C does not fit [0-9-]+");
    EXPECT_EQ(reason("{match:a?}{date:yy}{match:\\d?}", "26", TextDifference::none), "");
    EXPECT_EQ(reason("{match:.*}{date:yy}{match:\\d?}", "26266", TextDifference::none), "");
    EXPECT_EQ(reason("{match:.*}{lot}", "", TextDifference::count), "nothing was read");
    EXPECT_EQ(reason("{match:.*}", "", TextDifference::none), "");
}

TEST(MatchComparison, SaysThatNoDivisionFits)
{
    // The sentence about the parts takes one way to divide; here each part fits alone, but not at once.
    const TextComparison result = compared("{match:a|a-b}-{match:c|b-d}", QStringLiteral("a-b-x"));
    EXPECT_EQ(result.difference, TextDifference::pattern);
    EXPECT_FALSE(result.reason.isEmpty());
}

TEST(MatchComparison, GivesUpOnEndlessWork)
{
    const std::string sentence = "the pattern takes too long to try on this reading";
    EXPECT_EQ(compared("{match:(a+)+[bc]}", QString(200, QLatin1Char('a'))).reason.toStdString(), sentence);
    EXPECT_EQ(compared("{match:(a+)+[bc]}", QString(200, QLatin1Char('a'))).difference, TextDifference::pattern);
    EXPECT_EQ(compared("{match:.*} {match:x} {match:.*}x", QString(255, QLatin1Char(' ')) + QLatin1Char('x'))
                  .reason.toStdString(),
        sentence);
    EXPECT_EQ(compared("{match:.*}", QString(257, QLatin1Char('a'))).difference, TextDifference::count);
}

} // namespace
} // namespace scribo::line
