#pragma once

#include <QProcess>
#include <QTemporaryDir>

namespace scribo::test {

/// A real broker on a port of this machine.
class Broker
{
public:
    /// `settings` are added to its configuration; %1 in them is the broker's folder.
    explicit Broker(const QString& settings = QStringLiteral("allow_anonymous true\n"));
    ~Broker();

    void start();
    /// Ends it as a power cut does.
    void kill();

    QString file(const QString& name) const { return folder.filePath(name); }
    quint16 port() const { return portNumber; }

private:
    QTemporaryDir folder;
    QString settings;
    quint16 portNumber;
    QProcess process;
};

/// Makes a certificate authority and a certificate for 127.0.0.1 in `folder`: ca.crt, server.crt, server.key.
void makeCertificates(const QString& folder);

} // namespace scribo::test
