#pragma once

#include "core/linecommands.h"
#include "mqtt/mqttclient.h"

#include <QSet>
#include <QStringList>
#include <QTimer>

#include <atomic>
#include <memory>
#include <mutex>

struct mosquitto;
struct mosquitto_message;

namespace scribo::line {

/// One connection to the broker, over libmosquitto and its thread.
class MqttConnection
{
public:
    /// Fails when an option makes no sense or a file of TLS cannot be used.
    static Result<std::shared_ptr<MqttConnection>> make(const MqttOptions& options, LineCommands& commands);
    ~MqttConnection();
    MqttConnection(const MqttConnection&) = delete;
    MqttConnection& operator=(const MqttConnection&) = delete;

    /// Begins to connect; in a thread with an event loop, in which the connection is destroyed too.
    void open();

    void publishResult(const Verdict& verdict);
    void publishStatus(const EngineStatus& status);
    QString fault() const;

private:
    struct Free
    {
        void operator()(mosquitto* client) const;
    };

    MqttConnection(const MqttOptions& options, LineCommands& commands);
    Result<void> setUp();
    void tryToConnect();
    void onConnected(int code);
    void onDisconnected(int code);
    void onMessage(const mosquitto_message& message);
    QByteArray obey(const QByteArray& payload);
    bool isRepeated(const QString& id);
    bool publish(const char* topic, const QByteArray& payload, bool isRetained);
    QByteArray topic(const char* name) const;
    void setFault(const QString& text);

    const MqttOptions options;
    LineCommands& commands;
    std::unique_ptr<mosquitto, Free> client;
    QTimer retry;
    bool isLooping = false;
    QStringList knownIds; ///< of the newest commands; libmosquitto's thread
    std::atomic<int> waiting{0}; ///< messages that the broker has not acknowledged
    mutable std::mutex mutex; ///< guards what follows
    QByteArray state; ///< the newest, for a broker that comes back
    QByteArray status;
    QString problem;
    std::uint64_t dropped = 0;
};

} // namespace scribo::line
