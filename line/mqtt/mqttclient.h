#pragma once

#include "core/eventthread.h"
#include "core/linecommands.h"
#include "core/verdictsink.h"

#include <memory>
#include <mutex>

namespace scribo::line {

class MqttConnection;

/// How a station reaches its broker.
struct MqttOptions
{
    QString host;
    int port = 1883; ///< 8883 is usual with TLS
    QString station = QStringLiteral("1"); ///< a level of the topics: not empty, without '/', '+' and '#'
    QString user; ///< empty: none
    QString password;
    QString caFile; ///< PEM; not empty: TLS, and the broker's certificate must be signed by one of these
    QString certificateFile; ///< PEM, the station's own; empty: none
    QString keyFile; ///< PEM, of that certificate
};

/// The station at an MQTT broker:
///
///     scribo/STATION/result    QoS 1            a JSON object for each verdict
///     scribo/STATION/state     QoS 1, retained  ready, fault, or offline (also as the last will)
///     scribo/STATION/status    QoS 1, retained  a JSON object: state, faults, job
///     scribo/STATION/command   subscribed       a JSON object, see mqttmessages.h; retained ones are left alone
///     scribo/STATION/answer    QoS 1            a JSON object for each command
///
/// Connects by itself again. While the broker is away, up to 10,000 messages wait; further results are left out, which
/// fault() says. (The history keeps everything.)
class MqttClient : public VerdictSink
{
public:
    explicit MqttClient(MqttOptions options);
    ~MqttClient() override;

    /// Connects and hands commands to `commands`, which must live until stop(). Fails when an option makes no sense or
    /// a file of TLS cannot be used. A broker that does not answer is a fault(), not a failure.
    Result<void> start(LineCommands& commands);
    /// Says "offline" and disconnects; no command is handed over after it returns. deliver() may still be called.
    void stop();

    void deliver(const Verdict& verdict) override;
    void statusChanged(const EngineStatus& status) override;
    QString fault() const override;

private:
    const MqttOptions options;
    mutable std::mutex mutex; ///< guards what follows
    std::shared_ptr<MqttConnection> connection; ///< null: stopped
    EngineStatus lastStatus;
    EventThread thread; ///< makes and hands over messages
};

} // namespace scribo::line
