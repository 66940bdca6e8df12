#include "files/hostlog.h"

#include "files/outputfile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>

#include <cstdio>
#include <utility>

#include <unistd.h>

namespace scribo::host {

namespace {

constexpr qint64 largestFile = 10'000'000;

HostLog* active = nullptr;

QByteArray levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "critical";
    default:
        return "fatal";
    }
}

/// A device has no end to append at: Qt would look for one, and log that there is none.
QIODevice::OpenMode modeFor(const QString& path)
{
    const QFileInfo info(path);
    const bool startsOver = info.size() > largestFile || (info.exists() && !info.isFile());
    return QIODevice::WriteOnly | (startsOver ? QIODevice::Truncate : QIODevice::Append);
}

} // namespace

HostLog::HostLog()
{
    active = this;
    qInstallMessageHandler(&HostLog::handleQtMessage);
    for (int severity = 0; severity < google::NUM_SEVERITIES; ++severity) {
        google::SetLogDestination(severity, ""); // no files of glog's own
    }
    google::SetStderrLogging(google::GLOG_FATAL); // which ends the process, and must not do so silently
    google::AddLogSink(this);
}

HostLog::~HostLog()
{
    google::RemoveLogSink(this);
    qInstallMessageHandler(nullptr);
    active = nullptr;
}

Result<void> HostLog::open(const QString& path)
{
    auto opened = std::make_unique<QFile>(path);
    // Outside the lock: what Qt logs about the opening comes through write(), too.
    const bool isOpened = opened->open(modeFor(path));
    const QMutexLocker lock(&mutex);
    isDecided = true;
    if (!isOpened) {
        return unwritable(path, opened->errorString());
    }
    file = std::move(opened);
    file->write(early);
    file->flush();
    return {};
}

void HostLog::setVerbose(bool verbose)
{
    const QMutexLocker lock(&mutex);
    showsOnTerminal = verbose;
}

void HostLog::send(google::LogSeverity severity, const char* /*fullName*/, const char* baseName, int line,
    const google::LogMessageTime& /*time*/, const char* message, size_t length)
{
    write(QByteArray(google::GetLogSeverityName(severity)).toLower(),
        QByteArray(baseName) + ':' + QByteArray::number(line), QByteArray(message, static_cast<int>(length)));
}

void HostLog::handleQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (active == nullptr) {
        return;
    }
    const QByteArray source = context.file != nullptr ? QFileInfo(context.file).fileName().toUtf8() : QByteArray("Qt");
    if (type == QtFatalMsg) {
        active->setVerbose(true); // the process ends, and must not do so silently
    }
    active->write(levelName(type), source + ':' + QByteArray::number(context.line), message.toUtf8());
}

void HostLog::write(const QByteArray& level, const QByteArray& place, const QByteArray& message)
{
    const QByteArray time = QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toLatin1();
    const QByteArray line = time + ' ' + level + ' ' + place + "  " + message + '\n';
    const QMutexLocker lock(&mutex);
    if (!isDecided) {
        early += line;
    }
    if (file) {
        file->write(line);
        file->flush();
    }
    if (showsOnTerminal) {
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
        std::fflush(stderr);
    }
}

QString defaultLogFile()
{
    return QDir::temp().filePath(QStringLiteral("scribo-inspect-%1.log").arg(getuid()));
}

} // namespace scribo::host
