#include "mqtt/mqttmessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

namespace scribo::line::mqtt {
namespace {

QJsonObject parsed(const QByteArray& message)
{
    return QJsonDocument::fromJson(message).object();
}

template <class Kind>
Kind read(const char* payload)
{
    const Result<Command> command = parseCommand(payload);
    EXPECT_TRUE(command) << payload;
    const Kind* const kind = command ? std::get_if<Kind>(&command->what) : nullptr;
    EXPECT_NE(kind, nullptr) << payload;
    return kind != nullptr ? *kind : Kind{};
}

std::string refusal(const QByteArray& payload)
{
    const Result<Command> command = parseCommand(payload);
    return command ? "accepted" : command.error().message;
}

TEST(MqttCommand, IsReadWhole)
{
    read<TriggerCommand>(R"({"command": "trigger"})");
    EXPECT_EQ(std::get<int>(read<JobCommand>(R"({"command": "job", "job": 3})").job), 3);
    EXPECT_EQ(std::get<QString>(read<JobCommand>(R"({"command": "job", "job": "carton"})").job), "carton");
    EXPECT_EQ(read<LotCommand>(R"({"command": "lot", "lot": "A4827"})").lot, "A4827");
    EXPECT_EQ(read<CounterCommand>(R"({"command": "counter", "counter": 9007199254740991})").counter, 9007199254740991);
    EXPECT_EQ(parseCommand(R"({"command": "trigger", "id": "x1"})").value().id, "x1");
    EXPECT_EQ(parseCommand(R"({"command": "trigger", "id": 5})").value().id, QString());
}

TEST(MqttCommand, IsRefusedWithItsMistake)
{
    EXPECT_EQ(refusal("{"), "not JSON at byte 1: unterminated object");
    EXPECT_EQ(refusal("[]"), "not a JSON object");
    EXPECT_EQ(refusal("{}"), "\"command\" is none of trigger, job, lot, counter");
    EXPECT_EQ(refusal(R"({"command": "Trigger"})"), "\"command\" is none of trigger, job, lot, counter");
    const std::string job = "\"job\" is neither a number from 0 to 65535 nor a name";
    for (const char* const value : {"-1", "65536", "1.5", "true", "null", "[1]", "1e300"}) {
        EXPECT_EQ(refusal(QByteArray(R"({"command": "job", "job": )") + value + '}'), job) << value;
    }
    EXPECT_EQ(refusal(R"({"command": "job"})"), job);
    EXPECT_EQ(refusal(R"({"command": "lot", "lot": 5})"), "\"lot\" is not a text");
    const std::string counter = "\"counter\" is not a whole number from 0 to 2^53 - 1";
    for (const char* const value : {"-1", "0.5", "9007199254740992", "\"5\""}) {
        EXPECT_EQ(refusal(QByteArray(R"({"command": "counter", "counter": )") + value + '}'), counter) << value;
    }
    EXPECT_EQ(refusal(QByteArray(mostCommandBytes + 1, ' ')), "the command is longer than 4096 bytes");
}

TEST(MqttResult, HoldsTheWholeVerdict)
{
    Verdict verdict;
    verdict.sequence = 5000000000;
    verdict.takenAt = QDateTime(QDate(2026, 11, 21), QTime(13, 4, 5, 6), Qt::UTC);
    verdict.job = QStringLiteral("carton");
    verdict.jobNumber = 7;
    verdict.jobHash = QStringLiteral("ab");
    verdict.modelHash = QStringLiteral("cd");
    verdict.reason = Reason::textDiffers;
    verdict.reasonText = QStringLiteral("month is 10, expected 11");
    verdict.milliseconds = 12.5;
    RegionReading reading;
    reading.region = 1;
    reading.name = QStringLiteral("date");
    reading.text = QStringLiteral("10.26");
    reading.expected = QStringLiteral("11.26");
    reading.reason = Reason::textDiffers;
    reading.reasonText = verdict.reasonText;
    verdict.readings.append(reading);

    const QJsonObject message = parsed(resultMessage(QStringLiteral("S1"), verdict));
    const QJsonObject expected = QJsonDocument::fromJson(R"({
        "station": "S1", "sequence": 5000000000, "takenAt": "2026-11-21T13:04:05.006Z", "job": "carton", "jobNumber": 7,
        "jobHash": "ab", "modelHash": "cd", "verdict": "NG", "reason": 1, "reasonText": "month is 10, expected 11",
        "milliseconds": 12.5, "readings": [{"region": 1, "name": "date", "text": "10.26", "expected": "11.26",
            "verdict": "NG", "reason": 1, "reasonText": "month is 10, expected 11"}]})")
                                     .object();
    EXPECT_EQ(message, expected) << QJsonDocument(message).toJson().toStdString();
}

TEST(MqttStatus, SaysWhatIsWrong)
{
    EngineStatus status;
    status.faults = QStringList{QStringLiteral("camera 3 is not there")};
    status.job = QStringLiteral("carton");
    status.jobNumber = 7;
    EXPECT_EQ(parsed(statusMessage(status)),
        QJsonDocument::fromJson(
            R"({"state": "fault", "faults": ["camera 3 is not there"], "job": "carton", "jobNumber": 7})")
            .object());
    EXPECT_EQ(stateWord(status), "fault");
    status.state = EngineState::busy;
    EXPECT_EQ(stateWord(status), "ready");
    status.state = EngineState::ready;
    EXPECT_EQ(stateWord(status), "ready");
}

TEST(MqttAnswer, SaysWhatBecameOfTheCommand)
{
    EXPECT_EQ(parsed(answerMessage(QStringLiteral("x"), 7, {})),
        QJsonDocument::fromJson(R"({"id": "x", "accepted": true, "sequence": 7})").object());
    EXPECT_EQ(parsed(answerMessage({}, 0, QStringLiteral("no"))),
        QJsonDocument::fromJson(R"({"id": "", "accepted": false, "error": "no"})").object());
}

} // namespace
} // namespace scribo::line::mqtt
