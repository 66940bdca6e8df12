#include "mqtt/mqttclient.h"

#include "line/askedcommands.h"
#include "line/freeport.h"
#include "line/mqtt/broker.h"
#include "line/mqtt/listener.h"
#include "line/tcpproxy.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include <gmock/gmock.h>

namespace scribo::line {
namespace {

using test::Broker;
using test::Listener;
using testing::ElementsAre;
using testing::HasSubstr;

const QString resultTopic = QStringLiteral("scribo/S1/result");
const QString stateTopic = QStringLiteral("scribo/S1/state");
const QString statusTopic = QStringLiteral("scribo/S1/status");
const QString commandTopic = QStringLiteral("scribo/S1/command");
const QString answerTopic = QStringLiteral("scribo/S1/answer");

MqttOptions optionsFor(quint16 port)
{
    MqttOptions options;
    options.host = QStringLiteral("127.0.0.1");
    options.port = port;
    options.station = QStringLiteral("S1");
    return options;
}

Verdict numbered(std::uint64_t sequence)
{
    Verdict verdict;
    verdict.sequence = sequence;
    return verdict;
}

qint64 sequenceOf(const Listener::Message& message)
{
    return static_cast<qint64>(QJsonDocument::fromJson(message.payload)[QStringLiteral("sequence")].toDouble());
}

EngineStatus ready()
{
    EngineStatus status;
    status.state = EngineState::ready;
    return status;
}

auto endsWith(const QByteArray& payload)
{
    return [payload](const auto& messages) { return !messages.empty() && messages.back().payload == payload; };
}

bool becomesFine(const VerdictSink& sink)
{
    return QTest::qWaitFor([&] { return sink.fault().isEmpty(); }, 15000);
}

/// A broker, and a station at it.
class AtABroker : public testing::Test
{
protected:
    void SetUp() override
    {
        broker.start();
        options = optionsFor(broker.port());
    }

    Broker broker;
    MqttOptions options;
    test::AskedCommands commands;
};

TEST_F(AtABroker, PublishesResultsAndStates)
{
    Listener listener(broker.port());
    MqttClient client(options);
    client.statusChanged(ready());
    ASSERT_TRUE(client.start(commands));
    ASSERT_TRUE(becomesFine(client)) << client.fault().toStdString();
    client.deliver(numbered(1));
    client.deliver(numbered(2));

    const auto results = listener.await(resultTopic, 2);
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(sequenceOf(results[0]), 1);
    EXPECT_EQ(sequenceOf(results[1]), 2);
    EXPECT_EQ(listener.await(stateTopic, 1).at(0).payload, "ready");

    client.statusChanged({});
    EXPECT_EQ(listener.await(stateTopic, endsWith("fault")).back().payload, "fault");
    EXPECT_EQ(listener.await(statusTopic, 2).back().payload.left(1), "{");
    client.stop();
    EXPECT_EQ(listener.await(stateTopic, endsWith("offline")).back().payload, "offline");
}

TEST_F(AtABroker, KeepsItsStateForThoseWhoComeLater)
{
    MqttClient client(options);
    client.statusChanged(ready());
    ASSERT_TRUE(client.start(commands));
    ASSERT_TRUE(becomesFine(client));
    Listener early(broker.port());
    early.await(stateTopic, endsWith("ready"));

    Listener late(broker.port());
    const auto states = late.await(stateTopic, 1);
    ASSERT_EQ(states.size(), 1U);
    EXPECT_EQ(states[0].payload, "ready");
    EXPECT_TRUE(states[0].isRetained);
}

TEST_F(AtABroker, LeavesAWillForWhenItIsCutOff)
{
    Listener listener(broker.port());
    test::TcpProxy proxy(broker.port());
    MqttClient client(optionsFor(proxy.port()));
    client.statusChanged(ready());
    ASSERT_TRUE(client.start(commands));
    listener.await(stateTopic, endsWith("ready"));

    proxy.cut();
    EXPECT_EQ(listener.await(stateTopic, endsWith("offline")).back().payload, "offline");
    EXPECT_EQ(client.fault(), QStringLiteral("the connection to the broker 127.0.0.1:%1 is lost").arg(proxy.port()));
    proxy.mend();
    EXPECT_EQ(listener.await(stateTopic, endsWith("ready")).back().payload, "ready");
    EXPECT_TRUE(becomesFine(client));
}

TEST_F(AtABroker, ObeysCommandsAndAnswersThem)
{
    Listener listener(broker.port());
    MqttClient client(options);
    ASSERT_TRUE(client.start(commands));
    ASSERT_TRUE(becomesFine(client));
    listener.await(statusTopic, 1); // it has subscribed before it says so
    const char* const payloads[] = {R"({"command": "trigger", "id": "a"})", R"({"command": "job", "job": 7})",
        R"({"command": "job", "job": "carton"})", R"({"command": "job", "job": 8})",
        R"({"command": "lot", "lot": "A4"})", R"({"command": "counter", "counter": 41})", "nonsense",
        R"({"command": "trigger", "id": "a"})"};
    for (const char* const payload : payloads) {
        listener.publish(commandTopic, payload);
    }
    const auto answers = listener.await(answerTopic, std::size(payloads));
    ASSERT_EQ(answers.size(), std::size(payloads));
    EXPECT_EQ(QJsonDocument::fromJson(answers[0].payload),
        QJsonDocument::fromJson(R"({"id": "a", "accepted": true, "sequence": 101})"));
    EXPECT_EQ(QJsonDocument::fromJson(answers[3].payload),
        QJsonDocument::fromJson(R"({"id": "", "accepted": false, "error": "there is no such job"})"));
    EXPECT_THAT(answers[6].payload.toStdString(), HasSubstr("not JSON"));
    EXPECT_THAT(answers[7].payload.toStdString(), HasSubstr("this command was obeyed before"));
    EXPECT_THAT(commands.all(),
        ElementsAre(QStringLiteral("trigger"), QStringLiteral("job 7"), QStringLiteral("job carton"),
            QStringLiteral("job 8"), QStringLiteral("lot A4"), QStringLiteral("counter 41")));
}

TEST_F(AtABroker, LeavesRetainedCommandsAlone)
{
    Listener listener(broker.port());
    listener.publish(commandTopic, R"({"command": "trigger"})", true);
    listener.await(commandTopic, 1);
    MqttClient client(options);
    ASSERT_TRUE(client.start(commands));
    ASSERT_TRUE(becomesFine(client));
    listener.await(statusTopic, 1);
    listener.publish(commandTopic, R"({"command": "lot", "lot": "A4"})");
    listener.await(answerTopic, 1);
    EXPECT_THAT(commands.all(), ElementsAre(QStringLiteral("lot A4")));
}

TEST_F(AtABroker, SendsAllResultsOfAnOutageAfterIt)
{
    MqttClient client(options);
    ASSERT_TRUE(client.start(commands));
    ASSERT_TRUE(becomesFine(client));
    broker.kill();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !client.fault().isEmpty(); }, 15000));
    for (std::uint64_t i = 1; i <= 600; ++i) {
        client.deliver(numbered(i));
    }
    broker.start();
    // The station connects a second after the broker is there, at the earliest: the listener is first.
    Listener listener(broker.port());
    const auto results = listener.await(resultTopic, 600);
    ASSERT_GE(results.size(), 600U);
    EXPECT_EQ(sequenceOf(results.front()), 1);
    EXPECT_EQ(sequenceOf(results.back()), 600);
    EXPECT_TRUE(becomesFine(client));
}

TEST_F(AtABroker, CanBeStoppedWhileTheBrokerIsAway)
{
    MqttClient client(options);
    ASSERT_TRUE(client.start(commands));
    ASSERT_TRUE(becomesFine(client));
    broker.kill();
    client.deliver(numbered(1));
    client.stop();
    client.deliver(numbered(2));
    EXPECT_EQ(client.fault(), QString());
}

TEST(MqttClient, WaitsForABrokerThatComesLater)
{
    Broker broker;
    test::AskedCommands commands;
    MqttClient client(optionsFor(broker.port()));
    ASSERT_TRUE(client.start(commands));
    EXPECT_EQ(client.fault(),
        QStringLiteral("the broker 127.0.0.1:%1 cannot be reached: Connection refused").arg(broker.port()));
    broker.start();
    EXPECT_TRUE(becomesFine(client)) << client.fault().toStdString();
}

TEST(MqttClient, SaysWhenABrokerHasNoAddress)
{
    test::AskedCommands commands;
    MqttOptions options = optionsFor(1883);
    options.host = QStringLiteral("no-such-host.invalid");
    MqttClient client(options);
    ASSERT_TRUE(client.start(commands));
    EXPECT_FALSE(client.fault().isEmpty());
}

TEST(MqttClient, RefusesOptionsThatMakeNoSense)
{
    test::AskedCommands commands;
    for (const char* const station : {"", "a/b", "a+", "#"}) {
        MqttOptions options = optionsFor(1883);
        options.station = QString::fromLatin1(station);
        const Result<void> started = MqttClient(options).start(commands);
        ASSERT_FALSE(started);
        EXPECT_EQ(started.error().message,
            "\"" + std::string(station)
                + "\" cannot be part of a topic: a station's name is not empty and has no /, + or #");
    }
    MqttOptions options = optionsFor(1883);
    options.host.clear();
    EXPECT_EQ(MqttClient(options).start(commands).error().message, "the broker has no name");
    options = optionsFor(1883);
    options.caFile = QStringLiteral("/nonexistent/ca.crt");
    EXPECT_THAT(MqttClient(options).start(commands).error().message, HasSubstr("certificates of the broker: "));
}

TEST(MqttClient, SpeaksToABrokerThatWantsTlsAndAPassword)
{
    Broker broker(QStringLiteral("allow_anonymous false\npassword_file %1/passwords\ncafile %1/ca.crt\n"
                                 "certfile %1/server.crt\nkeyfile %1/server.key\n"));
    test::makeCertificates(broker.file(QString()));
    QProcess::execute(QStringLiteral("/usr/bin/mosquitto_passwd"),
        {QStringLiteral("-b"), QStringLiteral("-c"), broker.file(QStringLiteral("passwords")), QStringLiteral("line"),
            QStringLiteral("secret")});
    QFile::setPermissions(broker.file(QStringLiteral("passwords")), QFile::Permissions(0x6644));
    broker.start();
    test::AskedCommands commands;
    MqttOptions options = optionsFor(broker.port());
    options.caFile = broker.file(QStringLiteral("ca.crt"));
    options.user = QStringLiteral("line");
    options.password = QStringLiteral("secret");
    MqttClient client(options);
    ASSERT_TRUE(client.start(commands));
    EXPECT_TRUE(becomesFine(client)) << client.fault().toStdString();

    options.password = QStringLiteral("wrong");
    MqttClient stranger(options);
    ASSERT_TRUE(stranger.start(commands));
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return stranger.fault().contains(QStringLiteral("refuses the station")); }, 15000))
        << stranger.fault().toStdString();

    options.caFile.clear();
    MqttClient plain(options);
    ASSERT_TRUE(plain.start(commands));
    EXPECT_FALSE(QTest::qWaitFor([&] { return plain.fault().isEmpty(); }, 2000));
}

} // namespace
} // namespace scribo::line
