#include "line/mqtt/broker.h"

#include "line/freeport.h"

#include <QFile>
#include <QTcpSocket>
#include <QTest>

#include <gtest/gtest.h>

namespace scribo::test {

namespace {

void runTool(const QString& program, const QStringList& arguments, const QString& folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    ASSERT_TRUE(process.waitForFinished(30000)) << program.toStdString();
    ASSERT_EQ(process.exitCode(), 0) << process.readAll().toStdString();
}

void write(const QString& path, const QByteArray& text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

} // namespace

Broker::Broker(const QString& settings)
    : settings(settings)
    , portNumber(freePort())
{
    // A broker that is started by root becomes another user, who has to reach its files.
    QFile::setPermissions(folder.path(), QFile::Permissions(0x7755));
}

Broker::~Broker()
{
    kill();
}

void Broker::start()
{
    QString text = QStringLiteral("listener %1 127.0.0.1\n").arg(portNumber) + settings;
    write(file(QStringLiteral("broker.conf")), text.replace(QStringLiteral("%1"), folder.path()).toUtf8());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("/usr/sbin/mosquitto"), {QStringLiteral("-c"), file(QStringLiteral("broker.conf"))});
    ASSERT_TRUE(process.waitForStarted(10000));
    const bool isThere = QTest::qWaitFor(
        [this] {
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, portNumber);
            return socket.waitForConnected(200);
        },
        10000);
    ASSERT_TRUE(isThere) << process.readAll().toStdString();
}

void Broker::kill()
{
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(10000);
    }
}

void makeCertificates(const QString& folder)
{
    const QString openssl = QStringLiteral("/usr/bin/openssl");
    const auto split = [](const char* text) { return QString::fromLatin1(text).split(QLatin1Char(' ')); };
    write(folder + QStringLiteral("/names"), "subjectAltName=IP:127.0.0.1\n");
    runTool(openssl, split("req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=authority -keyout ca.key -out ca.crt"),
        folder);
    runTool(
        openssl, split("req -newkey rsa:2048 -nodes -subj /CN=127.0.0.1 -keyout server.key -out server.csr"), folder);
    runTool(openssl,
        split(
            "x509 -req -days 2 -in server.csr -CA ca.crt -CAkey ca.key -CAcreateserial -extfile names -out server.crt"),
        folder);
    QFile::setPermissions(folder + QStringLiteral("/server.key"), QFile::Permissions(0x6644));
}

} // namespace scribo::test
