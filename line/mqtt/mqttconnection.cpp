#include "mqtt/mqttconnection.h"

#include "mqtt/mqttmessages.h"

#include <QLoggingCategory>
#include <QSysInfo>
#include <QUuid>

#include <mosquitto.h>

#include <type_traits>

namespace scribo::line {

namespace {

Q_LOGGING_CATEGORY(log, "scribo.mqtt")

constexpr int qos = 1;
constexpr int commandQos = 2; // so that a publisher who cares can have a command exactly once
constexpr int keepAlive = 5; // s; a dead connection is noticed after one and a half of it
constexpr int longestReconnectDelay = 4; // s
constexpr int retryInterval = 2000; // ms
constexpr int mostWaiting = 10000; // messages
constexpr int mostKnownIds = 1000;

const char* const resultTopic = "result";
const char* const stateTopic = "state";
const char* const statusTopic = "status";
const char* const commandTopic = "command";
const char* const answerTopic = "answer";
const char* const offline = "offline";

/// The library wants to be set up once in a process, and stays so.
void setUpLibrary()
{
    static const int done = mosquitto_lib_init();
    static_cast<void>(done);
}

Result<void> asResult(int code, const QString& what)
{
    if (code == MOSQ_ERR_SUCCESS) {
        return {};
    }
    return failure(QStringLiteral("%1: %2").arg(what, QString::fromUtf8(mosquitto_strerror(code))).toStdString());
}

const char* orNull(const QByteArray& text)
{
    return text.isEmpty() ? nullptr : text.constData();
}

} // namespace

void MqttConnection::Free::operator()(mosquitto* client) const
{
    mosquitto_destroy(client);
}

Result<std::shared_ptr<MqttConnection>> MqttConnection::make(const MqttOptions& options, LineCommands& commands)
{
    setUpLibrary();
    std::shared_ptr<MqttConnection> made(new MqttConnection(options, commands));
    if (const Result<void> done = made->setUp(); !done) {
        return tl::unexpected(done.error());
    }
    return made;
}

MqttConnection::MqttConnection(const MqttOptions& options, LineCommands& commands)
    : options(options)
    , commands(commands)
{
    problem = QStringLiteral("the broker %1:%2 has not answered yet").arg(options.host).arg(options.port);
}

Result<void> MqttConnection::setUp()
{
    if (options.host.isEmpty()) {
        return failure("the broker has no name");
    }
    if (options.station.isEmpty() || options.station.contains(QLatin1Char('/'))
        || options.station.contains(QLatin1Char('+')) || options.station.contains(QLatin1Char('#'))) {
        return failure(
            QStringLiteral("\"%1\" cannot be part of a topic: a station's name is not empty and has no /, + or #")
                .arg(options.station)
                .toStdString());
    }
    client.reset(mosquitto_new(nullptr, true, this));
    if (!client) {
        return failure("the MQTT client cannot be made");
    }
    mosquitto_reconnect_delay_set(client.get(), 1, longestReconnectDelay, true);
    mosquitto_connect_callback_set(
        client.get(), [](mosquitto*, void* self, int code) { static_cast<MqttConnection*>(self)->onConnected(code); });
    mosquitto_disconnect_callback_set(client.get(),
        [](mosquitto*, void* self, int code) { static_cast<MqttConnection*>(self)->onDisconnected(code); });
    mosquitto_publish_callback_set(
        client.get(), [](mosquitto*, void* self, int) { --static_cast<MqttConnection*>(self)->waiting; });
    mosquitto_message_callback_set(client.get(), [](mosquitto*, void* self, const mosquitto_message* message) {
        static_cast<MqttConnection*>(self)->onMessage(*message);
    });
    if (!options.user.isEmpty()) {
        const int code = mosquitto_username_pw_set(
            client.get(), options.user.toUtf8().constData(), options.password.toUtf8().constData());
        if (Result<void> done = asResult(code, QStringLiteral("user and password")); !done) {
            return done;
        }
    }
    if (!options.caFile.isEmpty()) {
        const QByteArray ca = options.caFile.toUtf8();
        const QByteArray certificate = options.certificateFile.toUtf8();
        const QByteArray key = options.keyFile.toUtf8();
        const int code
            = mosquitto_tls_set(client.get(), ca.constData(), nullptr, orNull(certificate), orNull(key), nullptr);
        if (Result<void> done = asResult(code, QStringLiteral("certificates of the broker")); !done) {
            return done;
        }
    }
    const QByteArray will = topic(stateTopic);
    return asResult(
        mosquitto_will_set(client.get(), will.constData(), static_cast<int>(qstrlen(offline)), offline, qos, true),
        QStringLiteral("last will"));
}

MqttConnection::~MqttConnection()
{
    if (isLooping) {
        publish(stateTopic, offline, true);
        mosquitto_disconnect(client.get());
        // Without force the thread would go on trying to reach a broker that is away.
        mosquitto_loop_stop(client.get(), waiting > 1);
    }
}

void MqttConnection::open()
{
    QObject::connect(&retry, &QTimer::timeout, &retry, [this] { tryToConnect(); });
    retry.setSingleShot(true);
    tryToConnect();
}

void MqttConnection::tryToConnect()
{
    const int code = mosquitto_connect_async(client.get(), options.host.toUtf8().constData(), options.port, keepAlive);
    if (code == MOSQ_ERR_SUCCESS) {
        // From here on the library's thread connects again by itself; it does not after a first connection that fails.
        isLooping = mosquitto_loop_start(client.get()) == MOSQ_ERR_SUCCESS;
    }
    if (!isLooping) {
        setFault(QStringLiteral("the broker %1:%2 cannot be reached: %3")
                     .arg(options.host)
                     .arg(options.port)
                     .arg(QString::fromUtf8(mosquitto_strerror(code))));
        retry.start(retryInterval);
    }
}

// On the library's thread

void MqttConnection::onConnected(int code)
{
    if (code != 0) {
        setFault(QStringLiteral("the broker %1:%2 refuses the station: %3")
                     .arg(options.host)
                     .arg(options.port)
                     .arg(QString::fromUtf8(mosquitto_connack_string(code))));
        return;
    }
    setFault({});
    mosquitto_subscribe(client.get(), nullptr, topic(commandTopic).constData(), commandQos);
    QByteArray currentState;
    QByteArray currentStatus;
    {
        const std::lock_guard lock(mutex);
        currentState = state;
        currentStatus = status;
    }
    if (!currentState.isEmpty()) {
        publish(stateTopic, currentState, true);
        publish(statusTopic, currentStatus, true);
    }
}

void MqttConnection::onDisconnected(int code)
{
    // A broker that refuses the station ends the connection too: that reason stays.
    if (code != 0 && fault().isEmpty()) {
        setFault(QStringLiteral("the connection to the broker %1:%2 is lost").arg(options.host).arg(options.port));
    }
}

void MqttConnection::onMessage(const mosquitto_message& message)
{
    if (message.retain) {
        return; // an old command is none
    }
    publish(answerTopic, obey(QByteArray(static_cast<const char*>(message.payload), message.payloadlen)), false);
}

/// Hands a command over and returns its answer.
QByteArray MqttConnection::obey(const QByteArray& payload)
{
    const Result<mqtt::Command> command = mqtt::parseCommand(payload);
    if (!command) {
        qCWarning(log).noquote() << "a command cannot be read:" << QString::fromStdString(command.error().message);
        return mqtt::answerMessage({}, 0, QString::fromStdString(command.error().message));
    }
    if (isRepeated(command->id)) {
        return mqtt::answerMessage(command->id, 0, QStringLiteral("this command was obeyed before"));
    }
    std::uint64_t sequence = 0;
    Result<void> done;
    std::visit(
        [&](const auto& what) {
            using Kind = std::decay_t<decltype(what)>;
            if constexpr (std::is_same_v<Kind, mqtt::TriggerCommand>) {
                sequence = commands.trigger();
            } else if constexpr (std::is_same_v<Kind, mqtt::JobCommand>) {
                done = std::visit([&](const auto& job) { return commands.selectJob(job); }, what.job);
            } else if constexpr (std::is_same_v<Kind, mqtt::LotCommand>) {
                commands.setLot(what.lot);
            } else {
                commands.setCounter(what.counter);
            }
        },
        command->what);
    return mqtt::answerMessage(command->id, sequence, done ? QString() : QString::fromStdString(done.error().message));
}

/// A broker may deliver a message of QoS 1 twice.
bool MqttConnection::isRepeated(const QString& id)
{
    if (id.isEmpty()) {
        return false;
    }
    if (knownIds.contains(id)) {
        return true;
    }
    knownIds.append(id);
    if (knownIds.size() > mostKnownIds) {
        knownIds.removeFirst();
    }
    return false;
}

// On any thread

void MqttConnection::publishResult(const Verdict& verdict)
{
    if (waiting >= mostWaiting || !publish(resultTopic, mqtt::resultMessage(options.station, verdict), false)) {
        const std::lock_guard lock(mutex);
        ++dropped;
    }
}

void MqttConnection::publishStatus(const EngineStatus& engine)
{
    const QByteArray newState = mqtt::stateWord(engine);
    const QByteArray newStatus = mqtt::statusMessage(engine);
    {
        const std::lock_guard lock(mutex);
        if (newState == state && newStatus == status) {
            return;
        }
        state = newState;
        status = newStatus;
        if (!problem.isEmpty()) {
            return; // the newest is published on connection
        }
    }
    publish(stateTopic, newState, true);
    publish(statusTopic, newStatus, true);
}

QString MqttConnection::fault() const
{
    const std::lock_guard lock(mutex);
    if (dropped == 0) {
        return problem;
    }
    const QString lost = QStringLiteral("%1 results were not sent to the broker").arg(dropped);
    return problem.isEmpty() ? lost : problem + QStringLiteral("; ") + lost;
}

bool MqttConnection::publish(const char* name, const QByteArray& payload, bool isRetained)
{
    ++waiting;
    const int code = mosquitto_publish(
        client.get(), nullptr, topic(name).constData(), payload.size(), payload.constData(), qos, isRetained);
    // Without a connection the message waits in the library.
    if (code == MOSQ_ERR_SUCCESS || code == MOSQ_ERR_NO_CONN) {
        return true;
    }
    --waiting;
    return false;
}

QByteArray MqttConnection::topic(const char* name) const
{
    return "scribo/" + options.station.toUtf8() + '/' + name;
}

void MqttConnection::setFault(const QString& text)
{
    const std::lock_guard lock(mutex);
    problem = text;
}

} // namespace scribo::line
