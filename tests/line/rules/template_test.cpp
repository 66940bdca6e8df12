#include "rulestesting.h"

#include "rules/localmoment.h"

namespace scribo::line {
namespace {

using testing::expanded;
using testing::expandedAll;
using testing::inBerlin;
using testing::localTime;

const QString noon = QStringLiteral("2026-11-21T12:00");

TextSettings withTable(const QString& name, const LetterTable& table)
{
    TextSettings settings = inBerlin();
    settings.tables[name] = table;
    return settings;
}

struct Example
{
    const char* text;
    const char* at;
    const char* expected;
};

void PrintTo(const Example& example, std::ostream* out)
{
    *out << example.text << " at " << example.at;
}

class Dates : public ::testing::TestWithParam<Example>
{
};

TEST_P(Dates, AreExpandedAsPrinted)
{
    EXPECT_EQ(expanded(QString::fromUtf8(GetParam().text), QString::fromUtf8(GetParam().at)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Forms, Dates,
    ::testing::Values(Example{"EXP {date:dd.MM.yyyy;+18 months;end of month}", "2026-11-21T12:00", "EXP 31.05.2028"},
        Example{"{date:yyDDD}", "2026-11-21T12:00", "26325"}, Example{"{date:yyDDD}", "2026-01-01T12:00", "26001"},
        Example{"{date:yyDDD}", "2028-12-31T12:00", "28366"}, Example{"{date:yDDD}", "2026-11-21T12:00", "6325"},
        Example{"{date:dd MMM yyyy}", "2026-11-21T12:00", "21 Nov 2026"},
        Example{"{date:dd MMM yyyy;upper}", "2026-11-21T12:00", "21 NOV 2026"},
        Example{"{date:dd MMM yyyy;lower}", "2026-11-21T12:00", "21 nov 2026"},
        Example{"{date:d. MMMM yyyy;lang=de}", "2026-03-02T12:00", "2. März 2026"},
        Example{"{date:ddMMMyy;lang=de;upper}", "2026-03-02T12:00", "02MÄR26"},
        Example{"{date:MMMM;lang=zh}", "2026-11-02T12:00", "十一月"},
        Example{"{date:MMM;lang=zh}", "2026-11-02T12:00", "11月"},
        Example{"{date:MMMM;lang=en}", "2026-11-02T12:00", "November"},
        Example{"{date:yyyy年MM月dd日}", "2026-11-21T12:00", "2026年11月21日"},
        Example{"W{date:ww/GG}", "2027-01-01T12:00", "W53/26"},
        Example{"{date:GGGGwwe}", "2026-12-31T12:00", "2026534"},
        Example{"{date:HH:mm:ss}", "2026-11-21T05:07:09", "05:07:09"},
        Example{"{date:H.mm}", "2026-11-21T05:07:09", "5.07"},
        Example{"{date:hh:mm a}", "2026-11-21T00:07", "12:07 AM"},
        Example{"{date:h:mm a}", "2026-11-21T12:07", "12:07 PM"},
        Example{"{date:h:mm a;lower}", "2026-11-21T13:07", "1:07 pm"},
        Example{"{date:q/yy}", "2026-11-21T12:00", "4/26"},
        Example{"{date:dd/MM/yyyy;calendar=buddhist}", "2026-11-21T12:00", "21/11/2569"},
        Example{"{date:yyy.MM.dd;calendar=minguo}", "2026-11-21T12:00", "115.11.21"},
        Example{"{date:yy.MM.dd;calendar=minguo}", "2026-11-21T12:00", "15.11.21"}));

INSTANTIATE_TEST_SUITE_P(Offsets, Dates,
    ::testing::Values( //
        Example{"{date:dd.MM.yyyy;+1 month}", "2027-01-31T12:00", "28.02.2027"},
        Example{"{date:dd.MM.yyyy;+1 month}", "2028-01-31T12:00", "29.02.2028"},
        Example{"{date:dd.MM.yyyy;+1 year}", "2028-02-29T12:00", "28.02.2029"},
        Example{"{date:dd.MM.yyyy;+1 month;+1 month}", "2027-01-31T12:00", "28.03.2027"},
        Example{"{date:dd.MM.yyyy;-1 day}", "2027-01-01T12:00", "31.12.2026"},
        Example{"{date:dd.MM.yyyy;+6 weeks}", "2026-11-21T12:00", "02.01.2027"},
        Example{"{date:dd.MM.yyyy;+6weeks}", "2026-11-21T12:00", "02.01.2027"},
        Example{"{date:dd.MM.yyyy ; +2 years ; -1 day }", "2026-11-21T12:00", "20.11.2028 "},
        Example{"{date:dd.MM.yyyy;end of month;+1 day}", "2026-11-21T12:00", "01.12.2026"},
        Example{"{date:dd.MM.yyyy;+1 day;end of month}", "2026-11-30T12:00", "31.12.2026"},
        Example{"{date:dd.MM.yyyy;start of week}", "2026-11-21T12:00", "16.11.2026"},
        Example{"{date:dd.MM.yyyy;end of week}", "2026-11-21T12:00", "22.11.2026"},
        Example{"{date:dd.MM.yyyy;start of year}", "2026-11-21T12:00", "01.01.2026"},
        Example{"{date:dd.MM.yyyy;day begins at 06:00}", "2026-11-21T05:59:59", "20.11.2026"},
        Example{"{date:dd.MM.yyyy;day begins at 06:00}", "2026-11-21T06:00", "21.11.2026"},
        Example{"{date:dd HH:mm;day begins at 06:00}", "2026-11-21T05:59", "20 05:59"}));

INSTANTIATE_TEST_SUITE_P(Quotes, Dates,
    ::testing::Values( //
        Example{"{{LOT}} {date:dd}", "2026-11-21T12:00", "{LOT} 21"},
        Example{"{{{date:dd}}}", "2026-11-21T12:00", "{21}"},
        Example{"{date:yyyy-MM-dd'T'HH:mm}", "2026-11-21T05:07", "2026-11-21T05:07"},
        Example{"{date:HH 'o''clock'}", "2026-11-21T05:07", "05 o'clock"},
        Example{"{date:HH 'o'''clock''}", "2026-11-21T05:07",
            "failed: character 15: \"c\" is no part of a date; text goes between single quotes, 'c'"},
        Example{"{date:''yy}", "2026-11-21T12:00", "'26"}, Example{"{date:dd';}'MM}", "2026-11-21T12:00", "21;}11"},
        Example{"It's {date:dd}", "2026-11-21T12:00", "It's 21"},
        Example{"Best before", "2026-11-21T12:00", "Best before"}));

TEST(Template, TakesLettersFromTables)
{
    TextSettings settings = inBerlin();
    settings.tables[QStringLiteral("months")] = {{10, QStringLiteral("K")}, {11, QStringLiteral("L")}};
    settings.tables[QStringLiteral("years")]
        = {{2026, QStringLiteral("R")}, {26, QStringLiteral("S")}, {6, QStringLiteral("T")}};
    settings.tables[QStringLiteral("days")] = {{21, QStringLiteral("MO")}};
    EXPECT_EQ(expanded(QStringLiteral("{date:yMdd;month=months}"), noon, settings), "6L21");
    EXPECT_EQ(expanded(QStringLiteral("{date:yyyyM;year=years;month=months}"), noon, settings), "RL");
    EXPECT_EQ(expanded(QStringLiteral("{date:yyMM;year=years;month=months}"), noon, settings), "SL");
    EXPECT_EQ(expanded(QStringLiteral("{date:yMM; year = years ;-1 month;month=months}"), noon, settings), "TK");
    EXPECT_EQ(expanded(QStringLiteral("{date:d;day=days}"), noon, settings), "MO");
}

TEST(Template, TakesEveryKindOfNumberFromATable)
{
    for (const auto& [format, option, value] : {std::tuple("DDD", "dayofyear", 325), std::tuple("ww", "week", 47),
             std::tuple("e", "weekday", 6), std::tuple("q", "quarter", 4), std::tuple("HH", "hour", 12),
             std::tuple("H:mm", "minute", 0), std::tuple("H:mm:ss", "second", 0), std::tuple("G", "year", 6)}) {
        const QString text = QStringLiteral("{date:%1;%2=t}").arg(QLatin1String(format), QLatin1String(option));
        const std::string result = expanded(text, noon, withTable(QStringLiteral("t"), {{value, QStringLiteral("X")}}));
        EXPECT_EQ(result.back(), 'X') << text.toStdString() << " " << result;
    }
}

TEST(Template, FailsWhereATableHasNoEntry)
{
    EXPECT_EQ(
        expanded(QStringLiteral("{date:M;month=t}"), noon, withTable(QStringLiteral("t"), {{1, QStringLiteral("A")}})),
        "failed: table \"t\" has no entry for month 11");
    EXPECT_EQ(expanded(QStringLiteral("{date:M;month=t}")), "failed: there is no table \"t\"");
}

TEST(Template, TellsWhatTheSettingsLack)
{
    const auto faults = [](const char* text, const TextSettings& settings) {
        return TextTemplate::parse(QString::fromUtf8(text))->faults(settings).join(QStringLiteral("; ")).toStdString();
    };
    LetterTable months;
    for (int month = 1; month <= 10; ++month) {
        months[month] = QStringLiteral("X");
    }
    TextSettings settings = withTable(QStringLiteral("t"), months);
    EXPECT_EQ(faults("{date:M;month=t}", settings), "table \"t\" has no entry for month 11, 12");
    EXPECT_EQ(faults("{date:M;month=u}{date:MM;month=u}", settings), "there is no table \"u\"");
    EXPECT_EQ(faults("{date:yy;year=t}", settings), "");
    EXPECT_EQ(faults("{shift}", settings), "there are no shifts");
    settings.shifts[QTime(6, 0)] = QStringLiteral("E");
    EXPECT_EQ(faults("{shift} {date:dd}", settings), "");
}

TEST(Template, TakesTheLot)
{
    const QString text = QStringLiteral("LOT {lot}");
    EXPECT_EQ(
        expandedAll(text, {localTime(noon), QStringLiteral("A4828"), {}}), QStringList{QStringLiteral("LOT A4828")});
    EXPECT_EQ(
        expandedAll(text, {localTime(noon), QString(), {}}), QStringList{QStringLiteral("failed: no lot is set")});
    EXPECT_EQ(expandedAll(text, {localTime(noon), QString(129, QLatin1Char('A')), {}}),
        QStringList{QStringLiteral("failed: the lot is longer than 128 characters")});
    EXPECT_EQ(expandedAll(QStringLiteral("{lot}{lot}x"), {localTime(noon), QString(128, QLatin1Char('A')), {}}),
        QStringList{QStringLiteral("failed: the expected text is longer than 256 characters")});
}

TEST(Template, TakesTheCounter)
{
    const auto counted = [](const char* text, std::optional<qint64> counter) {
        return expandedAll(QString::fromUtf8(text), {localTime(noon), QString(), counter})
            .join(QString())
            .toStdString();
    };
    EXPECT_EQ(counted("{counter}", 0), "0");
    EXPECT_EQ(counted("{counter}", 12345), "12345");
    EXPECT_EQ(counted("{counter:0000}", 27), "0027");
    EXPECT_EQ(counted("{counter:0000}", 9999), "9999");
    EXPECT_EQ(counted("{counter:0000}", 10000), "failed: the counter is 10000, which has more than 4 digits");
    EXPECT_EQ(counted("{counter:0000}", -1), "failed: the counter is -1, which is less than 0");
    EXPECT_EQ(counted("{counter}", {}), "failed: no counter is set");
    EXPECT_EQ(counted("{counter:000000000000000000}", 7), "000000000000000007");
}

TEST(Template, TakesTheShift)
{
    TextSettings settings = inBerlin();
    settings.shifts = {
        {QTime(6, 0), QStringLiteral("E")}, {QTime(14, 0), QStringLiteral("L")}, {QTime(22, 0), QStringLiteral("N")}};
    const auto shiftAt
        = [&settings](const char* at) { return expanded(QStringLiteral("{shift}"), QString::fromUtf8(at), settings); };
    EXPECT_EQ(shiftAt("2026-11-21T06:00"), "E");
    EXPECT_EQ(shiftAt("2026-11-21T13:59:59"), "E");
    EXPECT_EQ(shiftAt("2026-11-21T14:00"), "L");
    EXPECT_EQ(shiftAt("2026-11-21T23:00"), "N");
    EXPECT_EQ(shiftAt("2026-11-21T00:00"), "N");
    EXPECT_EQ(shiftAt("2026-11-21T05:59:59"), "N");
    EXPECT_EQ(expanded(QStringLiteral("{shift}")), "failed: there are no shifts");
}

TEST(Template, BeginsTheDayWhenTheSettingsSay)
{
    TextSettings settings = inBerlin();
    settings.dayBegin = QTime(6, 0);
    EXPECT_EQ(expanded(QStringLiteral("{date:dd.MM.}"), QStringLiteral("2026-12-01T05:59"), settings), "30.11.");
    EXPECT_EQ(expanded(QStringLiteral("{date:dd.MM.}"), QStringLiteral("2026-12-01T06:00"), settings), "01.12.");
    EXPECT_EQ(
        expanded(QStringLiteral("{date:dd.MM.;day begins at 00:00}"), QStringLiteral("2026-12-01T05:59"), settings),
        "01.12.");
}

TEST(Template, ShowsMatchPartsAsTheyAreWritten)
{
    EXPECT_EQ(expanded(QStringLiteral("SN {match:[A-Z]{2}\\d{4}} {date:yy}")), "SN {match:[A-Z]{2}\\d{4}} 26");
    EXPECT_EQ(expanded(QStringLiteral("{match:[}\\]]\\}}")), "{match:[}\\]]\\}}");
    EXPECT_EQ(expanded(QStringLiteral("{match:[]}]}x")), "{match:[]}]}x");
    EXPECT_EQ(expanded(QStringLiteral("{match:[^]}]}x")), "{match:[^]}]}x");
    EXPECT_EQ(expanded(QStringLiteral("{match:[[:alpha:]}]}x")), "{match:[[:alpha:]}]}x");
    EXPECT_EQ(expanded(QStringLiteral("{match:a;b:c'}x")), "{match:a;b:c'}x");
}

TEST(Template, TellsWhatItUses)
{
    const auto parsed = TextTemplate::parse(QStringLiteral("{lot} {counter} {match:.}"));
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(parsed->usesLot() && parsed->usesCounter() && parsed->hasMatch());
    const auto plain = TextTemplate::parse(QStringLiteral("{date:dd}"));
    ASSERT_TRUE(plain);
    EXPECT_FALSE(plain->usesLot() || plain->usesCounter() || plain->hasMatch());
    EXPECT_EQ(plain->source(), QStringLiteral("{date:dd}"));
}

TEST(Template, FailsWithoutATime)
{
    EXPECT_EQ(expandedAll(QStringLiteral("{date:dd}"), {QDateTime(), QString(), {}}),
        QStringList{QStringLiteral("failed: the time is not valid")});
}

TEST(Template, FailsBeyondTheYearsItKnows)
{
    EXPECT_EQ(expanded(QStringLiteral("{date:yyyy;+973 years}")), "2999");
    EXPECT_EQ(expanded(QStringLiteral("{date:yyyy;+974 years}")), "failed: the date is beyond the years 1900 to 2999");
    EXPECT_EQ(expanded(QStringLiteral("{date:yyyy;-126 years}")), "1900");
    EXPECT_EQ(expanded(QStringLiteral("{date:yyyy;-127 years}")), "failed: the date is beyond the years 1900 to 2999");
    EXPECT_EQ(expanded(QStringLiteral("{date:yyyy;-9999 years}")), "failed: the date is beyond the years 1900 to 2999");
}

class GraceWindow : public ::testing::Test
{
protected:
    GraceWindow()
        : settings(inBerlin())
    {
        settings.grace = std::chrono::minutes(10);
    }

    std::string at(const char* time, const char* text = "{date:dd.MM.}") const
    {
        return expandedAll(QString::fromUtf8(text), {localTime(QString::fromUtf8(time)), QString(), {}}, settings)
            .join(QStringLiteral(" or "))
            .toStdString();
    }

    TextSettings settings = inBerlin();
};

TEST_F(GraceWindow, AcceptsBothDaysRoundMidnight)
{
    EXPECT_EQ(at("2026-11-20T23:49:59"), "20.11.");
    EXPECT_EQ(at("2026-11-20T23:50:00"), "20.11. or 21.11.");
    EXPECT_EQ(at("2026-11-20T23:59:59"), "20.11. or 21.11.");
    EXPECT_EQ(at("2026-11-21T00:00:00"), "21.11. or 20.11.");
    EXPECT_EQ(at("2026-11-21T00:09:59"), "21.11. or 20.11.");
    EXPECT_EQ(at("2026-11-21T00:10:00"), "21.11.");
    EXPECT_EQ(at("2026-11-21T12:00:00"), "21.11.");
}

TEST_F(GraceWindow, AcceptsBothDaysRoundTheCutOff)
{
    settings.dayBegin = QTime(6, 7);
    EXPECT_EQ(at("2026-11-21T00:00:00"), "20.11.");
    EXPECT_EQ(at("2026-11-21T05:56:59"), "20.11.");
    EXPECT_EQ(at("2026-11-21T05:57:00"), "20.11. or 21.11.");
    EXPECT_EQ(at("2026-11-21T06:16:59"), "21.11. or 20.11.");
    EXPECT_EQ(at("2026-11-21T06:17:00"), "21.11.");
    EXPECT_EQ(at("2026-11-21T22:05:00", "{date:dd.;day begins at 22:00}"), "21. or 20.");
}

TEST_F(GraceWindow, AcceptsOneTextWhereTheDayDoesNotShow)
{
    EXPECT_EQ(at("2026-11-20T23:55:00", "{date:MM.yyyy}"), "11.2026");
    EXPECT_EQ(at("2026-11-30T23:55:00", "{date:MM.yyyy}"), "11.2026 or 12.2026");
    EXPECT_EQ(at("2026-11-20T23:55:00", "Best before"), "Best before");
}

TEST_F(GraceWindow, ReachesOverShiftsAndHours)
{
    settings.shifts = {{QTime(6, 0), QStringLiteral("D")}, {QTime(18, 0), QStringLiteral("N")}};
    EXPECT_EQ(at("2026-11-21T17:55:00", "{date:dd}{shift}"), "21D or 21N");
    EXPECT_EQ(at("2026-11-21T00:05:00", "{date:dd}{shift}"), "21N or 20N");
    EXPECT_EQ(at("2026-11-21T00:05:00", "{date:dd HH}"), "21 00 or 20 23");
    EXPECT_EQ(at("2026-11-21T12:30:00", "{date:dd HH}"), "21 12");
}

TEST_F(GraceWindow, AcceptsEveryMinuteAndSecondWithin)
{
    settings.grace = std::chrono::minutes(1);
    EXPECT_EQ(at("2026-11-21T12:30:30", "{date:HH:mm}"), "12:30 or 12:31 or 12:29");
    settings.grace = std::chrono::seconds(1);
    EXPECT_EQ(at("2026-11-21T12:30:30", "{date:HH:mm:ss}"), "12:30:30 or 12:30:31 or 12:30:29");
    settings.grace = std::chrono::seconds(50);
    EXPECT_EQ(at("2026-11-21T12:30:30", "{date:HH:mm:ss}"),
        "failed: the grace window makes more than 100 texts right; make it shorter, or let a match part stand for the "
        "time");
}

TEST_F(GraceWindow, IsNeverLongerThanTwoHours)
{
    settings.grace = std::chrono::hours(100);
    EXPECT_EQ(at("2026-11-21T12:00:00"), "21.11.");
    EXPECT_EQ(at("2026-11-21T22:00:00"), "21.11. or 22.11.");
    EXPECT_EQ(at("2026-11-21T21:59:59"), "21.11.");
}

TEST_F(GraceWindow, CountsRealMinutesWhereTheClocksChange)
{
    // In Berlin 03:00 becomes 02:00 on 25 October 2026.
    settings.dayBegin = QTime(3, 0);
    const auto utc = [&](const char* time) {
        const QDateTime moment = QDateTime::fromString(QString::fromUtf8(time), Qt::ISODate);
        return expandedAll(QStringLiteral("{date:dd}"), {moment, QString(), {}}, settings)
            .join(QLatin1Char(' '))
            .toStdString();
    };
    EXPECT_EQ(utc("2026-10-25T00:55:00Z"), "24"); // 02:55, the first time
    EXPECT_EQ(utc("2026-10-25T01:55:00Z"), "24 25"); // 02:55, the second time
    EXPECT_EQ(utc("2026-10-25T02:05:00Z"), "25 24");
    settings.dayBegin = QTime(2, 30); // which comes twice, and begins the day once
    EXPECT_EQ(utc("2026-10-25T00:25:00Z"), "24 25");
    EXPECT_EQ(utc("2026-10-25T01:05:00Z"), "25"); // 02:05, the second time
    // 29 March: 02:00 becomes 03:00, and the day begins then.
    EXPECT_EQ(utc("2026-03-29T00:55:00Z"), "28 29");
    EXPECT_EQ(utc("2026-03-29T01:00:00Z"), "29 28");
    EXPECT_EQ(utc("2026-03-29T01:10:00Z"), "29");
}

TEST(Template, CountsDaysNotHoursWhereTheClocksChange)
{
    EXPECT_EQ(
        expanded(QStringLiteral("{date:dd.MM. HH:mm;+1 day}"), QStringLiteral("2026-03-28T23:30")), "29.03. 23:30");
    EXPECT_EQ(expanded(QStringLiteral("{date:dd.MM.;+1 day}"), QStringLiteral("2026-10-25T00:30")), "26.10.");
    EXPECT_EQ(expanded(QStringLiteral("{date:dd.MM.;-1 day}"), QStringLiteral("2026-10-25T23:30")), "24.10.");
}

TEST(Template, DoesNotRepeatAShiftWhenTheClockIsSetBack)
{
    TextSettings settings = inBerlin();
    settings.shifts = {{QTime(2, 30), QStringLiteral("E")}, {QTime(14, 0), QStringLiteral("L")}};
    const auto utc = [&](const char* time) {
        const QDateTime moment = QDateTime::fromString(QString::fromUtf8(time), Qt::ISODate);
        return expandedAll(QStringLiteral("{shift} {date:HH:mm}"), {moment, QString(), {}}, settings)
            .join(QLatin1Char(' '))
            .toStdString();
    };
    EXPECT_EQ(utc("2026-10-25T00:29:00Z"), "L 02:29");
    EXPECT_EQ(utc("2026-10-25T00:30:00Z"), "E 02:30");
    EXPECT_EQ(utc("2026-10-25T01:00:00Z"), "E 02:00");
    EXPECT_EQ(utc("2026-10-25T01:30:00Z"), "E 02:30");
}

TEST(Template, UsesTheZoneOfTheLine)
{
    const auto day = [](const char* zone, const QDateTime& now) {
        TextSettings settings;
        settings.zone = QTimeZone(zone);
        return expandedAll(QStringLiteral("{date:dd}"), {now, QString(), {}}, settings).join(QString()).toStdString();
    };
    const QDateTime moment(QDate(2026, 11, 21), QTime(23, 30), Qt::UTC);
    EXPECT_EQ(day("UTC", moment), "21");
    EXPECT_EQ(day("Europe/Berlin", moment), "22");
    EXPECT_EQ(day("America/New_York", moment), "21");
    EXPECT_EQ(day("UTC+01:00", moment), "22");
    EXPECT_EQ(day("UTC", moment.toTimeZone(QTimeZone("Europe/Berlin"))), "21");
    EXPECT_EQ(day("Nowhere/Here", moment), "failed: the time zone is not valid");
}

TEST(Template, UsesTheZoneOfTheMachineUnlessToldOtherwise)
{
    EXPECT_EQ(TextSettings().zone, QTimeZone::systemTimeZone());
}

TEST(LocalMoment, FindsWhenTheClockShowsATime)
{
    const auto shown = [](QDate date, QTime time) {
        const auto moment = LocalMoment::whenShown(date, time, QTimeZone("Europe/Berlin"));
        return moment ? QDateTime::fromMSecsSinceEpoch(*moment, Qt::UTC).toString(Qt::ISODate).toStdString() : "never";
    };
    EXPECT_EQ(shown({2026, 11, 21}, {12, 0}), "2026-11-21T11:00:00Z");
    EXPECT_EQ(shown({2026, 3, 29}, {1, 59, 59}), "2026-03-29T00:59:59Z");
    EXPECT_EQ(shown({2026, 3, 29}, {2, 0}), "never");
    EXPECT_EQ(shown({2026, 3, 29}, {3, 0}), "2026-03-29T01:00:00Z");
    EXPECT_EQ(shown({2026, 10, 25}, {2, 0}), "2026-10-25T00:00:00Z");
    EXPECT_EQ(shown({2026, 10, 25}, {3, 0}), "2026-10-25T02:00:00Z");
    EXPECT_EQ(shown({2038, 3, 28}, {3, 0}), "2038-03-28T01:00:00Z");
    EXPECT_EQ(shown({1969, 12, 31}, {23, 0}), "1969-12-31T22:00:00Z");
}

} // namespace
} // namespace scribo::line
