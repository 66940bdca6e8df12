#include "rulestesting.h"

#include <string>

namespace scribo::line {
namespace {

struct Faulty
{
    std::string text;
    std::string message;
};

void PrintTo(const Faulty& faulty, std::ostream* out)
{
    *out << faulty.text;
}

class TemplateFaults : public ::testing::TestWithParam<Faulty>
{
};

TEST_P(TemplateFaults, SayThePlaceAndWhatWasExpected)
{
    const auto parsed = TextTemplate::parse(QString::fromStdString(GetParam().text));
    ASSERT_FALSE(parsed);
    EXPECT_EQ(parsed.error().message, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(OfTheWhole, TemplateFaults,
    ::testing::Values( //
        Faulty{"", "the template is empty"},
        Faulty{std::string(1001, 'x'), "the template is longer than 1000 characters"},
        Faulty{"EXP\nLOT", "character 4: there is a control character, which cannot be printed"},
        Faulty{"a}", "character 2: \"}\" without \"{\" before it; write }} for a brace that is printed"},
        Faulty{"ab{", "character 3: the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"},
        Faulty{"ab{lot", "character 3: the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"},
        Faulty{"{date:'}", "character 1: the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"},
        Faulty{"{match:[}", "character 1: the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"},
        Faulty{"{match:[[:}", "character 1: the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"},
        Faulty{"{match:\\}", "character 1: the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"},
        Faulty{"{}", "character 2: \"\" is unknown; expected date, lot, counter, shift or match"},
        Faulty{"EXP {dates:dd}", "character 6: \"dates\" is unknown; expected date, lot, counter, shift or match"},
        Faulty{"{lot }", "character 5: expected \":\" or \"}\" after \"{lot\""},
        Faulty{"{ lot}", "character 2: expected \":\" or \"}\" after \"{\""},
        Faulty{"{lot:4}", "character 5: expected \"}\": lot has no options"},
        Faulty{"{shift:}", "character 7: expected \"}\": shift has no options"}));

INSTANTIATE_TEST_SUITE_P(OfCounters, TemplateFaults,
    ::testing::Values( //
        Faulty{"{counter:}", "character 10: expected a zero for each digit, as in {counter:0000}"},
        Faulty{"{counter:4}", "character 10: expected a zero for each digit, as in {counter:0000}"},
        Faulty{"{counter:00;upper}", "character 10: expected a zero for each digit, as in {counter:0000}"},
        Faulty{"{counter:0000000000000000000}", "character 10: a counter has at most 18 digits"}));

INSTANTIATE_TEST_SUITE_P(OfMatchParts, TemplateFaults,
    ::testing::Values( //
        Faulty{"{match}", "character 7: the pattern is empty"}, //
        Faulty{"{match:}", "character 8: the pattern is empty"},
        Faulty{"{match:" + std::string(257, 'a') + "}", "character 8: the pattern is longer than 256 characters"},
        Faulty{"x{match:a(b}",
            "character 9: the pattern is no regular expression: missing closing parenthesis at its character 3"},
        Faulty{"{match:a)|(b}",
            "character 8: the pattern is no regular expression: unmatched closing parenthesis at its character 1"},
        Faulty{"{match:(?x)a#}", "character 8: the pattern cannot stand as a part: missing closing parenthesis"},
        Faulty{"{match:(*LIMIT_MATCH=4000000000)a}",
            "character 8: the pattern cannot stand as a part: (*VERB) not recognized or malformed"},
        Faulty{"{match:a}{match:b}", "character 17: two match parts stand side by side; write one for both"},
        Faulty{"{match:a}-{match:a}-{match:a}-{match:a}-{match:a}-{match:a}-{match:a}-{match:a}-{match:a}",
            "character 88: there are more than 8 match parts"}));

INSTANTIATE_TEST_SUITE_P(OfFormats, TemplateFaults,
    ::testing::Values( //
        Faulty{"{date}", "character 6: the date has no format, expected one like dd.MM.yyyy"},
        Faulty{"{date:}", "character 7: the date has no format, expected one like dd.MM.yyyy"},
        Faulty{"{date:;end of month}", "character 7: the date has no format, expected one like dd.MM.yyyy"},
        Faulty{"{date:'x'}", "character 7: the date has no format, expected one like dd.MM.yyyy"},
        Faulty{"{date:dd{lot}}", "character 9: expected \"}\" before the next \"{\""},
        Faulty{"{date:yyyyYYYY}",
            "character 11: \"YYYY\" is no part of a date; write y, yy or yyyy for the year, or G, GG or GGGG for the "
            "year of the ISO week; text goes between single quotes, 'YYYY'"},
        Faulty{"{date:DD.MM.yyyy}",
            "character 7: \"DD\" is no part of a date; write d or dd for the day of the month, or DDD for the day of "
            "the year; text goes between single quotes, 'DD'"},
        Faulty{"{date:yyddd}",
            "character 9: \"ddd\" is no part of a date; write d or dd for the day of the month, DDD for the day of "
            "the year, or e for the day of the week; text goes between single quotes, 'ddd'"},
        Faulty{"{date:ddMMMMM}",
            "character 9: \"MMMMM\" is no part of a date; write M or MM for the number of the month, MMM or MMMM for "
            "its name; text goes between single quotes, 'MMMMM'"},
        Faulty{"{date:dd.X}", "character 10: \"X\" is no part of a date; text goes between single quotes, 'X'"},
        Faulty{"{date:dd.mm.yyyy}", "character 7: mm is the minute, and there is no hour; write MM for the month"},
        Faulty{"{date:HHss}", "character 7: ss is the second, and there is no minute (mm)"},
        Faulty{
            "{date:hh:mm}", "character 7: h and hh count to 12 and need a for AM or PM; write H or HH to count to 24"},
        Faulty{"{date:HH a}", "character 7: a is AM or PM and needs h or hh"},
        Faulty{"{date:yyy}", "character 7: yyy is for calendar=minguo only; write yyyy, yy or y"},
        Faulty{
            "{date:yyyy;calendar=minguo}", "character 7: years of the calendar minguo have three digits; write yyy"}));

INSTANTIATE_TEST_SUITE_P(OfOptions, TemplateFaults,
    ::testing::Values( //
        Faulty{"{date:dd;}",
            "character 10: \"\" is no option of a date; expected one like +18 months, end of month, lang=de, upper, "
            "month=TABLE, day begins at 06:00 or calendar=buddhist"},
        Faulty{"{date:dd; soon}",
            "character 11: \"soon\" is no option of a date; expected one like +18 months, end of month, lang=de, "
            "upper, month=TABLE, day begins at 06:00 or calendar=buddhist"},
        Faulty{"{date:dd;+18 moons}",
            "character 10: \"+18 moons\" is no offset; expected one like +18 months or -1 day, in days, weeks, months "
            "or years"},
        Faulty{"{date:dd;+ 1 day}",
            "character 10: \"+ 1 day\" is no offset; expected one like +18 months or -1 day, in days, weeks, months "
            "or years"},
        Faulty{"{date:dd;+99999999999 days}",
            "character 10: \"+99999999999 days\" is no offset; expected one like +18 months or -1 day, in days, weeks, "
            "months or years"},
        Faulty{"{date:dd;+10000 days}", "character 10: the offset is larger than 9999"},
        Faulty{
            "{date:dd;end of day}", "character 10: \"end of day\": expected end of (or start of) week, month or year"},
        Faulty{"{date:dd;end of months}",
            "character 10: \"end of months\": expected end of (or start of) week, month or year"},
        Faulty{"{date:dd;start of the month}",
            "character 10: \"start of the month\": expected end of (or start of) week, month or year"},
        Faulty{"{date:dd;day begins at 6}",
            "character 10: \"day begins at 6\": expected a time, as in day begins at 06:00"},
        Faulty{"{date:dd;day begins at 06:00;day begins at 06:00}",
            "character 30: \"day begins at 06:00\": this option can stand only once"},
        Faulty{"{date:dd;upper}", "character 10: upper changes nothing here: the date shows no name"},
        Faulty{"{date:MMM;upper;lower}", "character 17: upper or lower can stand only once"},
        Faulty{"{date:dd;lang=de}",
            "character 10: lang changes nothing here: the date shows no name of a month (MMM or MMMM)"},
        Faulty{"{date:MMM;lang=fr}", "character 11: the language \"fr\" is unknown; expected en, de or zh"},
        Faulty{"{date:MMM;lang=en;lang=de}", "character 19: \"lang=de\": this option can stand only once"},
        Faulty{"{date:MMM;lang=}", "character 11: nothing follows \"lang=\""},
        Faulty{"{date:yyyy;calendar=julian}",
            "character 12: the calendar \"julian\" is unknown; expected buddhist or minguo"},
        Faulty{"{date:dd;calendar=minguo}", "character 10: calendar changes nothing here: the date shows no year"},
        Faulty{"{date:yy;calendar=minguo;calendar=minguo}",
            "character 26: \"calendar=minguo\": this option can stand only once"},
        Faulty{"{date:M;color=red}",
            "character 9: \"color\" is unknown; expected lang, calendar, or what a table replaces: year, month, day, "
            "week, weekday, dayofyear, quarter, hour, minute or second"},
        Faulty{"{date:dd;month=t}", "character 10: month= changes nothing here: the date shows no number of the month"},
        Faulty{
            "{date:MMM;month=t}", "character 11: month= changes nothing here: the date shows no number of the month"},
        Faulty{"{date:M;month=t;month=u}", "character 17: \"month=u\": this option can stand only once"}));

} // namespace
} // namespace scribo::line
