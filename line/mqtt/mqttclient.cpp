#include "mqtt/mqttclient.h"

#include "mqtt/mqttconnection.h"

#include <utility>

namespace scribo::line {

MqttClient::MqttClient(MqttOptions options)
    : options(std::move(options))
{
}

MqttClient::~MqttClient()
{
    stop();
}

Result<void> MqttClient::start(LineCommands& commands)
{
    stop();
    Result<std::shared_ptr<MqttConnection>> made = failure({});
    thread.call([&] { made = MqttConnection::make(options, commands); });
    if (!made) {
        return tl::unexpected(made.error());
    }
    EngineStatus status;
    {
        const std::lock_guard lock(mutex);
        connection = *made;
        status = lastStatus;
    }
    thread.call([&] {
        (*made)->publishStatus(status);
        (*made)->open();
        made->reset();
    });
    return {};
}

void MqttClient::stop()
{
    std::shared_ptr<MqttConnection> ended;
    {
        const std::lock_guard lock(mutex);
        ended.swap(connection);
    }
    if (ended) {
        thread.call([&] { ended.reset(); });
    }
}

void MqttClient::deliver(const Verdict& verdict)
{
    const std::lock_guard lock(mutex);
    if (connection) {
        thread.post([connection = connection, verdict] { connection->publishResult(verdict); });
    }
}

void MqttClient::statusChanged(const EngineStatus& status)
{
    const std::lock_guard lock(mutex);
    lastStatus = status;
    if (connection) {
        thread.post([connection = connection, status] { connection->publishStatus(status); });
    }
}

QString MqttClient::fault() const
{
    const std::lock_guard lock(mutex);
    return connection ? connection->fault() : QString();
}

} // namespace scribo::line
