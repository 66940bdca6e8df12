#include "plc/plcworker.h"

#include <QLoggingCategory>
#include <QModbusTcpConnectionObserver>
#include <QTcpSocket>

#include <utility>

namespace scribo::line {

namespace {

Q_LOGGING_CATEGORY(log, "scribo.plc")

constexpr int heartbeatInterval = 100; // ms
constexpr int retryInterval = 2000; // ms
constexpr int unit = 1; // the server's address among those behind one gateway

/// Lets only the PLCs in that were named.
class Doorkeeper : public QModbusTcpConnectionObserver
{
public:
    explicit Doorkeeper(QList<QHostAddress> allowed)
        : allowed(std::move(allowed))
    {
    }

    bool acceptNewConnection(QTcpSocket* client) override
    {
        const QHostAddress peer = client->peerAddress();
        bool isAllowed = false;
        for (const QHostAddress& one : std::as_const(allowed)) {
            // A server that listens on IPv6 too sees IPv4 peers in IPv6's notation.
            isAllowed = isAllowed || one.isEqual(peer, QHostAddress::TolerantConversion);
        }
        if (!isAllowed) {
            qCWarning(log).noquote() << "refused a connection from" << peer.toString();
        }
        return isAllowed;
    }

private:
    const QList<QHostAddress> allowed;
};

} // namespace

PlcWorker::PlcWorker(const PlcOptions& options, LineCommands& commands)
    : options(options)
    , commands(commands)
    , server(new QModbusTcpServer(this))
    , heartbeat(new QTimer(this))
    , retry(new QTimer(this))
{
    connect(heartbeat, &QTimer::timeout, this, [this] { set(plc::Input::heartbeat, ++beats); });
    connect(retry, &QTimer::timeout, this, &PlcWorker::tryToListen);
    retry->setSingleShot(true);
    QModbusDataUnitMap map;
    map.insert(QModbusDataUnit::HoldingRegisters,
        {QModbusDataUnit::HoldingRegisters, 0, static_cast<quint16>(plc::Holding::count)});
    map.insert(
        QModbusDataUnit::InputRegisters, {QModbusDataUnit::InputRegisters, 0, static_cast<quint16>(plc::Input::count)});
    server->setMap(map);
    server->setServerAddress(unit);
    server->setConnectionParameter(QModbusDevice::NetworkAddressParameter, options.address.toString());
    server->setConnectionParameter(QModbusDevice::NetworkPortParameter, options.port);
    server->installConnectionObserver(new Doorkeeper(options.allowed)); // the server owns it
    connect(server, &QModbusServer::dataWritten, this, &PlcWorker::onWritten);
}

PlcWorker::~PlcWorker()
{
    server->disconnectDevice();
}

void PlcWorker::listen()
{
    heartbeat->start(heartbeatInterval);
    tryToListen();
}

void PlcWorker::tryToListen()
{
    if (server->connectDevice()) {
        listening = true;
        setFault({});
        return;
    }
    setFault(QStringLiteral("the PLC port %1:%2 cannot be had: %3")
                 .arg(options.address.toString())
                 .arg(options.port)
                 .arg(server->errorString()));
    retry->start(retryInterval);
}

void PlcWorker::onWritten(QModbusDataUnit::RegisterType table, int address, int size)
{
    if (table != QModbusDataUnit::HoldingRegisters) {
        return;
    }
    const int end = address + size;
    // A lot that comes with a trigger is that of its item.
    if (end > plc::Holding::lot) {
        takeLot();
    }
    if (address <= plc::Holding::commandNumber && end > plc::Holding::commandNumber) {
        takeCommand();
    }
}

void PlcWorker::takeLot()
{
    QVector<quint16> registers;
    for (quint16 i = 0; i < plc::Holding::lotLength; ++i) {
        registers.append(holding(static_cast<quint16>(plc::Holding::lot + i)));
    }
    commands.setLot(plc::unpackText(registers));
}

void PlcWorker::takeCommand()
{
    const quint16 number = holding(plc::Holding::commandNumber);
    if (number == newestCommand) {
        return;
    }
    newestCommand = number;
    switch (const quint16 code = holding(plc::Holding::command); static_cast<plc::Command>(code)) {
    case plc::Command::trigger:
        open.insert(commands.trigger(), number);
        return;
    case plc::Command::job:
        chooseJob(number);
        return;
    case plc::Command::none: // a PLC that starts writes zeros
        answer(number, plc::Answer::none, Reason::none);
        return;
    default:
        qCWarning(log) << "unknown command" << code;
        answer(number, plc::Answer::ng, Reason::unknownCommand);
    }
}

void PlcWorker::chooseJob(quint16 commandNumber)
{
    const Result<void> chosen = commands.selectJob(static_cast<int>(holding(plc::Holding::jobNumber)));
    if (!chosen) {
        qCWarning(log).noquote() << QString::fromStdString(chosen.error().message);
    }
    answer(commandNumber, chosen ? plc::Answer::ok : plc::Answer::ng, chosen ? Reason::none : Reason::noJob);
}

void PlcWorker::answer(quint16 commandNumber, plc::Answer answer, Reason reason)
{
    set(plc::Input::verdict, static_cast<quint16>(answer));
    set(plc::Input::reason, static_cast<quint16>(reason));
    set(plc::Input::textLength, 0);
    set(plc::Input::text, plc::packText({}, plc::Input::textRegisters));
    set(plc::Input::commandAnswered, commandNumber);
}

void PlcWorker::showVerdict(const Verdict& verdict)
{
    const auto command = open.find(verdict.sequence);
    const bool isCommanded = command != open.end();
    if (!isCommanded && !options.showsAllItems) {
        return;
    }
    const QString text = joinedTexts(verdict);
    set(plc::Input::verdict, static_cast<quint16>(verdict.isOk ? plc::Answer::ok : plc::Answer::ng));
    set(plc::Input::sequence, plc::packNumber(verdict.sequence));
    set(plc::Input::reason, static_cast<quint16>(verdict.reason));
    set(plc::Input::textLength, static_cast<quint16>(qMin<int>(text.size(), 2 * plc::Input::textRegisters)));
    set(plc::Input::text, plc::packText(text, plc::Input::textRegisters));
    if (isCommanded) {
        set(plc::Input::commandAnswered, command.value());
        open.erase(command);
    }
}

void PlcWorker::showStatus(const EngineStatus& status)
{
    plc::State state = plc::State::fault;
    switch (status.state) {
    case EngineState::ready:
        state = plc::State::ready;
        break;
    case EngineState::busy:
        state = plc::State::busy;
        break;
    case EngineState::fault:
        break;
    }
    set(plc::Input::state, static_cast<quint16>(state));
    set(plc::Input::jobNumber, static_cast<quint16>(status.jobNumber));
    set(plc::Input::okCount, plc::packNumber(status.okCount));
    set(plc::Input::ngCount, plc::packNumber(status.ngCount));
}

quint16 PlcWorker::holding(quint16 address) const
{
    quint16 value = 0;
    server->data(QModbusDataUnit::HoldingRegisters, address, &value);
    return value;
}

void PlcWorker::set(quint16 address, quint16 value)
{
    server->setData(QModbusDataUnit::InputRegisters, address, value);
}

void PlcWorker::set(quint16 address, const QVector<quint16>& values)
{
    server->setData(QModbusDataUnit(QModbusDataUnit::InputRegisters, address, values));
}

QString PlcWorker::fault() const
{
    const std::lock_guard lock(mutex);
    return problem;
}

void PlcWorker::setFault(const QString& text)
{
    const std::lock_guard lock(mutex);
    problem = text;
}

} // namespace scribo::line
