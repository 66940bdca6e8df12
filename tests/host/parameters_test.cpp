#include "files/settingsfile.h"
#include "inspectorfixture.h"
#include "settings.h"

#include <QJsonArray>

using namespace scribo::host;

namespace {

class HostParameters : public InspectorFixture
{
protected:
    /// What is said about a settings file with this content.
    QString settingsError(const QByteArray& json)
    {
        station.write("s.json", json);
        const QString error = errorText(readSettings(station.path("s.json"), *processor));
        EXPECT_NE(error, "") << json.constData();
        EXPECT_EQ(station.read("s.json"), json);
        return error.mid(station.path("s.json").size());
    }
};

/// Settings that leave all parameters before this one as they are.
QByteArray settingsOf(int number, const QByteArray& entry)
{
    return R"({"paramsWrap": [)" + QByteArray("{},").repeated(number - 1) + entry + "]}";
}

} // namespace

TEST_F(HostParameters, SetsEachKindFromAText)
{
    EXPECT_EQ(set(2, "ocr_a_p1_1_v2"), "");
    EXPECT_EQ(describe(2), "ocr_a_p1_1_v2.trt");
    EXPECT_EQ(set(9, "2"), "");
    EXPECT_EQ(describe(9), "1 off | [2 固定字符] | 3 auto");
    EXPECT_EQ(set(9, "auto"), "");
    EXPECT_EQ(describe(9), "1 off | 2 固定字符 | [3 auto]");
    EXPECT_EQ(set(4, "on,off"), "");
    EXPECT_EQ(describe(4), "[1 save OK] | 2 save NG");
    EXPECT_EQ(set(10, "A=B:\"ü\""), "");
    EXPECT_EQ(describe(10), "\"A=B:\"ü\"\"");
    EXPECT_EQ(set(13, "3:12"), "");
    EXPECT_EQ(set(13, "7"), "");
    EXPECT_EQ(describe(13), "7 (limits 3:12)");
    EXPECT_EQ(describe(1), "");
}

TEST_F(HostParameters, SaysWhyAValueIsRefusedAndChangesNothing)
{
    EXPECT_EQ(set(0, "1"), "parameter 0: the processor has no such parameter (see --list-params)");
    EXPECT_EQ(set(14, "1"), "parameter 14: the processor has no such parameter (see --list-params)");
    EXPECT_EQ(set(1, "1"), "parameter 1: is a heading, which has no value");
    EXPECT_EQ(set(7, "x"), "parameter 7: is written by the processor itself");
    EXPECT_EQ(set(2, "b"), "parameter 2: no such model: \"b\" (ocr_a_p1_1_v1.trt, ocr_a_p1_1_v2.trt)");
    EXPECT_EQ(set(2, ""), "parameter 2: no such model: \"\" (ocr_a_p1_1_v1.trt, ocr_a_p1_1_v2.trt)");
    EXPECT_EQ(set(2, "ocr_a"), "parameter 2: model \"ocr_a\" stands for several: ocr_a_p1_1_v1.trt, ocr_a_p1_1_v2.trt");
    EXPECT_EQ(set(9, "4"), "parameter 9: \"4\" is none of the choices: [1 off] | 2 固定字符 | 3 auto");
    EXPECT_EQ(set(9, "0"), "parameter 9: \"0\" is none of the choices: [1 off] | 2 固定字符 | 3 auto");
    const QString switches = " must be \"on\" or \"off\" for each of 2 choices, separated by commas";
    for (const char* const text : {"on", "on,on,on", "on,", "1,0"}) {
        EXPECT_EQ(set(4, text), QString("parameter 4: \"%1\"").arg(text) + switches);
    }
    EXPECT_EQ(set(5, "many"), "parameter 5: \"many\" is not a number");
    EXPECT_EQ(set(5, "10000"), "parameter 5: 10000 is not between 0 and 9999");
    EXPECT_EQ(set(5, "9:3"), "parameter 5: the lower limit 9 is above the upper limit 3");
    EXPECT_EQ(set(5, "0:x"), "parameter 5: \"x\" is not a number");
    EXPECT_EQ(describe(2), "");
    EXPECT_EQ(describe(4), "1 save OK | 2 save NG");
    EXPECT_EQ(describe(5), "0 (limits 0:1000)");
}

TEST_F(HostParameters, ReadsAssignments)
{
    EXPECT_EQ(errorText(setParameter(*processor, "10=a=b")), "");
    EXPECT_EQ(describe(10), "\"a=b\"");
    for (const char* const text : {"10", "=5", "x=5", ""}) {
        EXPECT_EQ(errorText(setParameter(*processor, text)), QString("\"%1\" is not NUMBER=VALUE").arg(text));
    }
}

TEST_F(HostParameters, SettingsComeBackFromTheirFile)
{
    set(9, "2");
    set(10, "LOT:\"Ä\"");
    ASSERT_EQ(errorText(writeSettings(station.path("s.json"), *processor)), "");
    const auto other = makeInspector();
    ASSERT_EQ(errorText(readSettings(station.path("s.json"), other->processor())), "");
    const QJsonObject expected = currentSettings(*processor);
    const QJsonObject actual = currentSettings(other->processor());
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(actual["paramsWrap"].toArray()[9].toObject()["values"].toString(), "LOT:\"Ä\"");
}

TEST_F(HostParameters, DamagedSettingsChangeNothing)
{
    const QJsonObject before = currentSettings(*processor);
    EXPECT_TRUE(settingsError(R"({"paramsWrap": [{}, )").startsWith(":1:"));
    EXPECT_EQ(settingsError("[]"), ": not a settings file: the array \"paramsWrap\" is missing");
    EXPECT_EQ(settingsError(R"({"paramsWrap": 3})"), ": not a settings file: the array \"paramsWrap\" is missing");
    EXPECT_EQ(settingsError(R"({"paramsWrap": [{"isRunningShow": false}, 5]})"),
        ": \"paramsWrap\": parameter 2 is not an object");
    EXPECT_EQ(settingsError(R"({"paramsWrap": [{},{},{},{},{},{},{},{},{},{},{},{},{},{}]})"),
        ": settings of 14 parameters, but the processor has 13");
    EXPECT_EQ(currentSettings(*processor), before);
}

TEST_F(HostParameters, SettingsOfOtherTypesAreDamaged)
{
    const QJsonObject before = currentSettings(*processor);
    const auto expectDemand = [&](int number, const QByteArray& entry, const QString& demand) {
        EXPECT_EQ(settingsError(settingsOf(number, entry)),
            QString(": \"paramsWrap\": parameter %1: %2").arg(number).arg(demand));
    };
    expectDemand(1, R"({"isRunningShow": "no"})", "\"isRunningShow\" must be true or false");
    expectDemand(2, R"({"selectedText": null})", "\"selectedText\" must be a text");
    expectDemand(10, R"({"values": 7})", "\"values\" must be a text");
    for (const char* const values : {"\"fixed\"", "1", "{}", "[false, 1, false]"}) {
        expectDemand(9, QByteArray(R"({"values": )") + values + '}', "\"values\" must be a list of true and false");
    }
    for (const char* const values :
        {"[]", "[false, false, false]", "[false, true, true]", "[false, false, false, true]"}) {
        expectDemand(9, QByteArray(R"({"values": )") + values + '}', "\"values\" must be a list with one true");
    }
    expectDemand(4, R"({"values": [1, 0]})", "\"values\" must be a list of true and false");
    for (const char* const low : {"\"3\"", "true", "2.5", "99999999999", "1e12"}) {
        expectDemand(
            13, QByteArray(R"({"highThresh": 9, "lowThresh": )") + low + '}', "\"lowThresh\" must be a whole number");
    }
    EXPECT_EQ(currentSettings(*processor), before);
}

TEST_F(HostParameters, SettingsMayLackKeysAndHaveMore)
{
    station.write("s.json", settingsOf(4, R"({"values": [true, true], "note": 3}, {"highThresh": -1})"));
    EXPECT_EQ(errorText(readSettings(station.path("s.json"), *processor)), "");
    EXPECT_EQ(describe(4), "[1 save OK] | [2 save NG]");
}

TEST_F(HostParameters, UnwritableSettingsAreNamed)
{
    const QString error = errorText(writeSettings("/proc/none/s.json", *processor));
    EXPECT_TRUE(error.startsWith("/proc/none/s.json: cannot be written: ")) << qPrintable(error);
}
