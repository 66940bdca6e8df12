#pragma once

#include "core/eventthread.h"

#include <QHostAddress>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

namespace scribo::test {

/// A network in between, on a port of its own: it can be cut and mended.
class TcpProxy
{
public:
    /// Passes everything on to `target` on this machine.
    explicit TcpProxy(quint16 target)
    {
        thread.call([this, target] {
            server = std::make_unique<QTcpServer>();
            server->listen(QHostAddress::LocalHost);
            number = server->serverPort();
            QObject::connect(server.get(), &QTcpServer::newConnection, server.get(), [this, target] { join(target); });
        });
    }
    ~TcpProxy()
    {
        thread.call([this] { server.reset(); });
    }
    TcpProxy(const TcpProxy&) = delete;
    TcpProxy& operator=(const TcpProxy&) = delete;

    quint16 port() const { return number; }

    /// Drops all connections, and lets nobody in.
    void cut()
    {
        thread.call([this] {
            isCut = true;
            for (const QPointer<QTcpSocket>& socket : std::as_const(sockets)) {
                if (socket) {
                    socket->abort();
                }
            }
            sockets.clear();
        });
    }

    void mend()
    {
        thread.call([this] { isCut = false; });
    }

private:
    void join(quint16 target)
    {
        QTcpSocket* const near = server->nextPendingConnection();
        if (isCut) {
            near->abort();
            near->deleteLater();
            return;
        }
        auto* const far = new QTcpSocket(server.get());
        far->connectToHost(QHostAddress::LocalHost, target);
        for (const auto& [from, to] : {std::pair(near, far), std::pair(far, near)}) {
            sockets.append(from);
            QObject::connect(from, &QTcpSocket::readyRead, to, [from = from, to = to] { to->write(from->readAll()); });
            QObject::connect(from, &QTcpSocket::disconnected, to, [from = from, to = to] {
                to->disconnectFromHost();
                from->deleteLater();
            });
        }
    }

    std::unique_ptr<QTcpServer> server;
    QList<QPointer<QTcpSocket>> sockets;
    quint16 number = 0;
    bool isCut = false;
    line::EventThread thread;
};

} // namespace scribo::test
