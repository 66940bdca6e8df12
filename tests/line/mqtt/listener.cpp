#include "line/mqtt/listener.h"

#include <QElapsedTimer>

#include <chrono>
#include <thread>

#include <mosquitto.h>

namespace scribo::test {

namespace {

constexpr int patience = 10000; // ms

bool waitFor(const std::function<bool()>& condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > patience) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace

Listener::Listener(quint16 port)
{
    mosquitto_lib_init();
    client = mosquitto_new(nullptr, true, this);
    mosquitto_connect_callback_set(
        client, [](mosquitto* self, void*, int) { mosquitto_subscribe(self, nullptr, "scribo/#", 2); });
    mosquitto_subscribe_callback_set(client, [](mosquitto*, void* self, int, int, const int*) {
        auto* const listener = static_cast<Listener*>(self);
        const std::lock_guard lock(listener->mutex);
        listener->isSubscribed = true;
    });
    mosquitto_message_callback_set(client, [](mosquitto*, void* self, const mosquitto_message* message) {
        auto* const listener = static_cast<Listener*>(self);
        const std::lock_guard lock(listener->mutex);
        listener->messages.push_back({QString::fromUtf8(message->topic),
            QByteArray(static_cast<const char*>(message->payload), message->payloadlen), message->retain});
    });
    mosquitto_reconnect_delay_set(client, 1, 1, false);
    mosquitto_connect(client, "127.0.0.1", port, 30);
    mosquitto_loop_start(client);
    waitFor([this] {
        const std::lock_guard lock(mutex);
        return isSubscribed;
    });
}

Listener::~Listener()
{
    mosquitto_disconnect(client);
    mosquitto_loop_stop(client, true);
    mosquitto_destroy(client);
}

void Listener::publish(const QString& topic, const QByteArray& payload, bool isRetained)
{
    mosquitto_publish(client, nullptr, topic.toUtf8().constData(), payload.size(), payload.constData(), 2, isRetained);
}

std::vector<Listener::Message> Listener::await(
    const QString& topic, const std::function<bool(const std::vector<Message>&)>& condition) const
{
    waitFor([&] { return condition(of(topic)); });
    return of(topic);
}

std::vector<Listener::Message> Listener::await(const QString& topic, std::size_t count) const
{
    return await(topic, [count](const auto& all) { return all.size() >= count; });
}

std::vector<Listener::Message> Listener::of(const QString& topic) const
{
    const std::lock_guard lock(mutex);
    std::vector<Message> result;
    for (const Message& message : messages) {
        if (message.topic == topic) {
            result.push_back(message);
        }
    }
    return result;
}

} // namespace scribo::test
