#include "rules/textsettings.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace scribo::line {
namespace {

Result<TextSettings> read(const char* json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    EXPECT_TRUE(document.isObject()) << json;
    return textSettings(document.object());
}

std::string fault(const char* json)
{
    const auto settings = read(json);
    return settings ? "none" : settings.error().message;
}

TEST(TextSettings, AreReadFromJson)
{
    const auto settings = read(R"({"dayBegins": "06:00", "graceMinutes": 10,
        "shifts": {"06:00": "E", "22:00": "N"},
        "timeZone": "Asia/Shanghai", "tables": {"months": "ABCDEFGHJKLM", "weekdays": ["MO", "TU"], "years": {"2026": "R", "0": "S"}}})");
    ASSERT_TRUE(settings) << settings.error().message;
    EXPECT_EQ(settings->zone, QTimeZone("Asia/Shanghai"));
    EXPECT_EQ(settings->dayBegin, QTime(6, 0));
    EXPECT_EQ(settings->grace, std::chrono::minutes(10));
    EXPECT_EQ(settings->shifts.size(), 2);
    EXPECT_EQ(settings->shifts[QTime(22, 0)], QStringLiteral("N"));
    EXPECT_EQ(settings->tables[QStringLiteral("months")].size(), 12);
    EXPECT_EQ(settings->tables[QStringLiteral("months")][9], QStringLiteral("J"));
    EXPECT_EQ(settings->tables[QStringLiteral("weekdays")][2], QStringLiteral("TU"));
    EXPECT_EQ(settings->tables[QStringLiteral("years")][2026], QStringLiteral("R"));
    EXPECT_EQ(settings->tables[QStringLiteral("years")][0], QStringLiteral("S"));
}

TEST(TextSettings, HaveDefaults)
{
    const auto settings = read("{}");
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->dayBegin, QTime(0, 0));
    EXPECT_EQ(settings->grace, std::chrono::seconds(0));
    EXPECT_TRUE(settings->tables.isEmpty() && settings->shifts.isEmpty());
}

TEST(TextSettings, SayWhatIsWrong)
{
    EXPECT_EQ(fault(R"({"dayBegin": "06:00"})"),
        "\"dayBegin\" is unknown, expected dayBegins, graceMinutes, shifts, tables, timeZone");
    EXPECT_EQ(fault(R"({"timeZone": "Nowhere/Here"})"),
        "timeZone: \"Nowhere/Here\" is unknown, expected one like Europe/Berlin");
    EXPECT_EQ(fault(R"({"timeZone": 1})"), "timeZone: \"\" is unknown, expected one like Europe/Berlin");
    EXPECT_EQ(fault(R"({"dayBegins": "6"})"), "dayBegins is \"6\", expected a time like 06:00");
    EXPECT_EQ(fault(R"({"dayBegins": "24:00"})"), "dayBegins is \"24:00\", expected a time like 06:00");
    EXPECT_EQ(fault(R"({"dayBegins": 6})"), "dayBegins is \"\", expected a time like 06:00");
    EXPECT_EQ(fault(R"({"graceMinutes": -1})"), "graceMinutes: expected a whole number from 0 to 120");
    EXPECT_EQ(fault(R"({"graceMinutes": 121})"), "graceMinutes: expected a whole number from 0 to 120");
    EXPECT_EQ(fault(R"({"graceMinutes": 1.5})"), "graceMinutes: expected a whole number from 0 to 120");
    EXPECT_EQ(fault(R"({"graceMinutes": "10"})"), "graceMinutes: expected a whole number from 0 to 120");
    EXPECT_EQ(fault(R"({"shifts": {}})"), "shifts: expected an object like {\"06:00\": \"E\", \"18:00\": \"N\"}");
    EXPECT_EQ(fault(R"({"shifts": {"x": "E"}})"), "a shift's beginning is \"x\", expected a time like 06:00");
    EXPECT_EQ(fault(R"({"shifts": {"06:00": ""}})"), "shift \"06:00\" is not a text of 1 to 32 characters");
    EXPECT_EQ(fault(R"({"tables": []})"), "tables: expected an object of tables by name");
    const std::string shape
        = "table \"t\": expected a text with one character for each number from 1, a list of texts, "
          "or an object of texts by number, with 1 to 1000 entries";
    EXPECT_EQ(fault(R"({"tables": {"t": ""}})"), shape);
    EXPECT_EQ(fault(R"({"tables": {"t": 7}})"), shape);
    EXPECT_EQ(fault(("{\"tables\": {\"t\": \"" + std::string(1001, 'x') + "\"}}").c_str()), shape);
    EXPECT_EQ(fault(R"({"tables": {"t": ["A", 2]}})"), "table \"t\", entry \"2\" is not a text of 1 to 32 characters");
    EXPECT_EQ(fault(R"({"tables": {"t": {"1": "123456789012345678901234567890123"}}})"),
        "table \"t\", entry \"1\" is not a text of 1 to 32 characters");
    EXPECT_EQ(fault(R"({"tables": {"t": {"01": "A"}}})"), "table \"t\", entry \"01\": expected a number like 2026");
    EXPECT_EQ(fault(R"({"tables": {"t": {"-1": "A"}}})"), "table \"t\", entry \"-1\": expected a number like 2026");
    EXPECT_EQ(fault(R"({"tables": {"t": {"x": "A"}}})"), "table \"t\", entry \"x\": expected a number like 2026");
}

TEST(SystemClock, TellsTheTime)
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QDateTime now = systemClock()();
    EXPECT_EQ(now.timeSpec(), Qt::UTC);
    EXPECT_GE(now, before);
    EXPECT_LE(now, QDateTime::currentDateTimeUtc());
}

} // namespace
} // namespace scribo::line
