#pragma once

#include <QHostAddress>
#include <QTcpServer>

namespace scribo::test {

/// A port of this machine that nobody listens on.
inline quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace scribo::test
