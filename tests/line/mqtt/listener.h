#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

struct mosquitto;

namespace scribo::test {

/// Another client of the broker: hears everything below scribo/ and publishes commands.
class Listener
{
public:
    struct Message
    {
        QString topic;
        QByteArray payload;
        bool isRetained = false;
    };

    explicit Listener(quint16 port);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void publish(const QString& topic, const QByteArray& payload, bool isRetained = false);

    /// The messages of a topic once `condition` holds of them; those of ten seconds otherwise.
    std::vector<Message> await(
        const QString& topic, const std::function<bool(const std::vector<Message>&)>& condition) const;
    /// The same for a number of them.
    std::vector<Message> await(const QString& topic, std::size_t count) const;

private:
    std::vector<Message> of(const QString& topic) const;

    mutable std::mutex mutex;
    std::vector<Message> messages;
    bool isSubscribed = false;
    mosquitto* client;
};

} // namespace scribo::test
