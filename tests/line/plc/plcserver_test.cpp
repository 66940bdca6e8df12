#include "plc/plcserver.h"

#include "engine/lineengine.h"
#include "line/askedcommands.h"
#include "line/engine/collectingsink.h"
#include "line/engine/scriptedsource.h"
#include "line/freeport.h"
#include "plc/plcregisters.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QModbusTcpClient>
#include <QProcess>
#include <QTcpServer>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

namespace scribo::line {
namespace {

using plc::Holding::command;
using testing::ElementsAre;

constexpr quint16 trigger = 1;
constexpr quint16 job = 2;

/// A PLC, as far as Modbus shows it.
class Plc
{
public:
    explicit Plc(quint16 port)
    {
        client.setConnectionParameter(QModbusDevice::NetworkAddressParameter, QStringLiteral("127.0.0.1"));
        client.setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
        client.setTimeout(5000);
        client.setNumberOfRetries(0);
    }

    bool connectToStation()
    {
        client.connectDevice();
        return QTest::qWaitFor([this] { return client.state() == QModbusDevice::ConnectedState; }, 5000);
    }
    bool isConnected() { return client.state() == QModbusDevice::ConnectedState; }
    void disconnectFromStation() { client.disconnectDevice(); }

    bool write(quint16 address, const QVector<quint16>& values)
    {
        return finish(client.sendWriteRequest(QModbusDataUnit(QModbusDataUnit::HoldingRegisters, address, values), 1));
    }

    QVector<quint16> read()
    {
        QVector<quint16> values;
        finish(
            client.sendReadRequest(QModbusDataUnit(QModbusDataUnit::InputRegisters, 0, plc::Input::count), 1), &values);
        return values;
    }

    /// All input registers once `condition` holds of them; empty after five seconds.
    template <class Condition>
    QVector<quint16> await(Condition condition)
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 5000) {
            const QVector<quint16> values = read();
            if (values.size() == plc::Input::count && condition(values)) {
                return values;
            }
        }
        return {};
    }

    QVector<quint16> awaitAnswer(quint16 number)
    {
        return await([number](const auto& values) { return values[plc::Input::commandAnswered] == number; });
    }

private:
    bool finish(QModbusReply* reply, QVector<quint16>* values = nullptr)
    {
        if (reply == nullptr) {
            return false;
        }
        const bool isDone = QTest::qWaitFor([reply] { return reply->isFinished(); }, 6000)
            && reply->error() == QModbusDevice::NoError;
        if (isDone && values != nullptr) {
            *values = reply->result().values();
        }
        reply->deleteLater();
        return isDone;
    }

    QModbusTcpClient client;
};

class PlcConnection : public testing::Test
{
protected:
    PlcConnection() { options.port = test::freePort(); }

    void start()
    {
        server = std::make_unique<PlcServer>(options);
        server->start(commands);
        plc = std::make_unique<Plc>(options.port);
        ASSERT_TRUE(plc->connectToStation());
    }

    static Verdict verdict(std::uint64_t sequence, bool isOk, const QString& text)
    {
        Verdict verdict;
        verdict.sequence = sequence;
        verdict.isOk = isOk;
        verdict.reason = isOk ? Reason::none : Reason::textDiffers;
        RegionReading reading;
        reading.text = text;
        verdict.readings.append(reading);
        return verdict;
    }

    PlcOptions options;
    test::AskedCommands commands;
    std::unique_ptr<PlcServer> server;
    std::unique_ptr<Plc> plc;
};

TEST_F(PlcConnection, AnswersATriggerWithItsVerdict)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    EXPECT_THAT(commands.all(), ElementsAre(QStringLiteral("trigger")));
    EXPECT_EQ(plc->read()[plc::Input::commandAnswered], 0);

    server->deliver(verdict(101, false, QStringLiteral("LOT1")));
    const auto values = plc->awaitAnswer(5);
    ASSERT_EQ(values.size(), plc::Input::count);
    EXPECT_EQ(values[plc::Input::verdict], 2);
    EXPECT_EQ(values[plc::Input::sequence], 101);
    EXPECT_EQ(values[plc::Input::sequence + 1], 0);
    EXPECT_EQ(values[plc::Input::reason], static_cast<quint16>(Reason::textDiffers));
    EXPECT_EQ(values[plc::Input::textLength], 4);
    EXPECT_THAT(values.mid(plc::Input::text, 3), ElementsAre(0x4c4f, 0x5431, 0));
}

TEST_F(PlcConnection, ShowsSequenceNumbersBeyondSixteenBits)
{
    options.showsAllItems = true;
    start();
    server->deliver(verdict(0x30001, true, QStringLiteral("A")));
    const auto values = plc->await([](const auto& all) { return all[plc::Input::sequence] == 1; });
    ASSERT_FALSE(values.isEmpty());
    EXPECT_EQ(values[plc::Input::sequence + 1], 3);
    EXPECT_EQ(values[plc::Input::verdict], 1);
}

TEST_F(PlcConnection, TakesTheSameCommandNumberTwiceForOneCommand)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    EXPECT_EQ(commands.all().size(), 1);
    ASSERT_TRUE(plc->write(command, {trigger, 6}));
    EXPECT_EQ(commands.all().size(), 2);
}

TEST_F(PlcConnection, TakesACommandWrittenRegisterByRegister)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger}));
    EXPECT_TRUE(commands.all().isEmpty());
    ASSERT_TRUE(plc->write(plc::Holding::commandNumber, {9}));
    EXPECT_EQ(commands.all().size(), 1);
}

TEST_F(PlcConnection, CountsCommandsBeyondTheLargestNumber)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger, 65535}));
    ASSERT_TRUE(plc->write(command, {trigger, 0}));
    ASSERT_TRUE(plc->write(command, {trigger, 1}));
    EXPECT_EQ(commands.all().size(), 3);
}

TEST_F(PlcConnection, AnswersAJobCommand)
{
    start();
    ASSERT_TRUE(plc->write(command, {job, 1, 7}));
    auto values = plc->awaitAnswer(1);
    ASSERT_FALSE(values.isEmpty());
    EXPECT_EQ(values[plc::Input::verdict], 1);
    EXPECT_EQ(values[plc::Input::reason], 0);

    ASSERT_TRUE(plc->write(command, {job, 2, 8}));
    values = plc->awaitAnswer(2);
    ASSERT_FALSE(values.isEmpty());
    EXPECT_EQ(values[plc::Input::verdict], 2);
    EXPECT_EQ(values[plc::Input::reason], static_cast<quint16>(Reason::noJob));
    EXPECT_THAT(commands.all(), ElementsAre(QStringLiteral("job 7"), QStringLiteral("job 8")));
}

TEST_F(PlcConnection, AnswersACommandThatThereIsNot)
{
    start();
    ASSERT_TRUE(plc->write(command, {77, 3}));
    const auto values = plc->awaitAnswer(3);
    ASSERT_FALSE(values.isEmpty());
    EXPECT_EQ(values[plc::Input::verdict], 2);
    EXPECT_EQ(values[plc::Input::reason], static_cast<quint16>(Reason::unknownCommand));
    EXPECT_TRUE(commands.all().isEmpty());
}

TEST_F(PlcConnection, TakesZerosForNoCommand)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    ASSERT_TRUE(plc->write(command, {0, 0}));
    EXPECT_EQ(commands.all().size(), 1);
    EXPECT_EQ(plc->read()[plc::Input::verdict], 0);
}

TEST_F(PlcConnection, HandsTheLotOverBeforeATriggerOfTheSameRequest)
{
    start();
    QVector<quint16> all(plc::Holding::count, 0);
    all[0] = trigger;
    all[1] = 1;
    all[plc::Holding::lot] = 0x4134;
    all[plc::Holding::lot + 1] = 0x3800;
    ASSERT_TRUE(plc->write(0, all));
    EXPECT_THAT(commands.all(), ElementsAre(QStringLiteral("lot A48"), QStringLiteral("trigger")));
}

TEST_F(PlcConnection, RefusesRegistersThatThereAreNot)
{
    start();
    EXPECT_FALSE(plc->write(plc::Holding::count, {1}));
    EXPECT_FALSE(plc->write(plc::Holding::count - 1, {1, 2}));
    EXPECT_TRUE(commands.all().isEmpty());
}

TEST_F(PlcConnection, KeepsOtherItemsFromTheAnswerOfItsTriggers)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    server->deliver(verdict(100, true, QStringLiteral("OTHER")));
    server->deliver(verdict(101, false, QStringLiteral("MINE")));
    server->deliver(verdict(102, true, QStringLiteral("OTHER")));
    EngineStatus status;
    status.okCount = 2;
    server->statusChanged(status);
    const auto values = plc->await([](const auto& all) { return all[plc::Input::okCount] == 2; });
    ASSERT_FALSE(values.isEmpty());
    EXPECT_EQ(values[plc::Input::sequence], 101);
    EXPECT_EQ(values[plc::Input::verdict], 2);
}

TEST_F(PlcConnection, ShowsStatesAndCounts)
{
    server = std::make_unique<PlcServer>(options);
    EngineStatus status;
    status.state = EngineState::ready;
    status.jobNumber = 3;
    status.okCount = 70000;
    status.ngCount = 5;
    server->statusChanged(status); // before it is started: it shows what holds then
    server->start(commands);
    plc = std::make_unique<Plc>(options.port);
    ASSERT_TRUE(plc->connectToStation());
    const auto values = plc->read();
    ASSERT_EQ(values.size(), plc::Input::count);
    EXPECT_EQ(values[plc::Input::state], 1);
    EXPECT_EQ(values[plc::Input::jobNumber], 3);
    EXPECT_EQ(values[plc::Input::okCount], 70000 - 65536);
    EXPECT_EQ(values[plc::Input::okCount + 1], 1);
    EXPECT_EQ(values[plc::Input::ngCount], 5);
    for (const auto& [state, code] : {std::pair(EngineState::busy, 2), std::pair(EngineState::fault, 3)}) {
        status.state = state;
        server->statusChanged(status);
        EXPECT_FALSE(plc->await([code = code](const auto& all) { return all[plc::Input::state] == code; }).isEmpty());
    }
}

TEST_F(PlcConnection, ShowsThatTheStationLives)
{
    start();
    const quint16 before = plc->read()[plc::Input::heartbeat];
    EXPECT_FALSE(plc->await([before](const auto& all) { return all[plc::Input::heartbeat] >= before + 3; }).isEmpty());
}

TEST_F(PlcConnection, KeepsTheAnswerForAPlcThatComesBack)
{
    start();
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    plc->disconnectFromStation();
    plc.reset();
    server->deliver(verdict(101, true, QStringLiteral("LOT1")));

    plc = std::make_unique<Plc>(options.port);
    ASSERT_TRUE(plc->connectToStation());
    EXPECT_FALSE(plc->awaitAnswer(5).isEmpty());
    ASSERT_TRUE(plc->write(command, {trigger, 5}));
    EXPECT_EQ(commands.all().size(), 1) << "the same command again, after the connection was lost";
}

TEST_F(PlcConnection, LetsOnlyThoseInThatWereNamed)
{
    options.allowed = {QHostAddress(QStringLiteral("192.0.2.1"))};
    server = std::make_unique<PlcServer>(options);
    server->start(commands);
    plc = std::make_unique<Plc>(options.port);
    static_cast<void>(plc->connectToStation());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !plc->isConnected(); }, 5000));
    EXPECT_FALSE(plc->write(command, {trigger, 1}));
    EXPECT_TRUE(commands.all().isEmpty());
}

TEST_F(PlcConnection, WaitsForAPortThatIsTaken)
{
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::LocalHost, options.port));
    server = std::make_unique<PlcServer>(options);
    server->start(commands);
    EXPECT_FALSE(server->isListening());
    EXPECT_THAT(server->fault().toStdString(),
        testing::StartsWith(
            QStringLiteral("the PLC port 127.0.0.1:%1 cannot be had: ").arg(options.port).toStdString()));
    other.close();
    EXPECT_TRUE(QTest::qWaitFor([this] { return server->isListening(); }, 10000));
    EXPECT_EQ(server->fault(), QString());
}

TEST_F(PlcConnection, CanBeStoppedAndStartedAgain)
{
    start();
    server->stop();
    EXPECT_FALSE(server->isListening());
    server->deliver(verdict(1, true, QString()));
    server->statusChanged({});
    plc.reset();
    server->start(commands);
    plc = std::make_unique<Plc>(options.port);
    EXPECT_TRUE(plc->connectToStation());
}

/// Says OK of everything.
class YesJudge : public ItemJudge
{
public:
    const JobIdentity& identity() const override { return who; }
    const QJsonObject& sourceSettings() const override { return settings; }
    Judgement judge(const Frame& frame, const ItemContext& context) override
    {
        Judgement judgement;
        judgement.isOk = true;
        RegionReading reading;
        reading.text = frame.name + context.lot;
        judgement.readings.append(reading);
        return judgement;
    }
    JobIdentity who{QStringLiteral("carton"), 7, {}, {}};

private:
    QJsonObject settings;
};

/// An independent implementation of the protocol drives the engine, as a PLC does.
TEST_F(PlcConnection, ServesPymodbus)
{
    server = std::make_unique<PlcServer>(options);
    auto made = std::make_unique<test::ScriptedSource>();
    for (int i = 0; i < 50; ++i) {
        made->show(i);
    }
    LineEngine engine({}, std::move(made), {server.get()});
    engine.setJobs({{7, std::make_shared<YesJudge>()}});
    engine.start();
    server->start(engine);

    QProcess python;
    python.setProcessChannelMode(QProcess::MergedChannels);
    python.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(PYMODBUS_CLIENT), QString::number(options.port)});
    ASSERT_TRUE(python.waitForFinished(60000));
    EXPECT_EQ(python.exitCode(), 0) << python.readAll().toStdString();
    server->stop();
}

} // namespace
} // namespace scribo::line
