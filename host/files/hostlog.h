#pragma once

#include "result.h"

#include <QFile>
#include <QMutex>
#include <QString>

#include <glog/logging.h>

#include <memory>

namespace scribo::host {

/// Writes the log of both loggers, Qt's and glog's, to one file instead of the terminal, in the order of time. There
/// can be one at a time. No other thread may log while it is made or destroyed.
///
/// What is logged before the file is open is kept and written when it is.
class HostLog : public google::LogSink
{
public:
    HostLog();
    ~HostLog() override;
    HostLog(const HostLog&) = delete;
    HostLog& operator=(const HostLog&) = delete;

    /// Appends to `path`, a file or a device, from now on; a file that has grown beyond 10 MB starts over. After
    /// an error, which starts with the file, the log goes nowhere.
    Result<void> open(const QString& path);
    /// Shows the log on the terminal too.
    void setVerbose(bool verbose);

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char* fullName, const char* baseName, int line,
        const google::LogMessageTime& time, const char* message, size_t length) override;

private:
    static void handleQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message);
    void write(const QByteArray& level, const QByteArray& place, const QByteArray& message);

    std::unique_ptr<QFile> file; ///< null: the log goes to no file
    QMutex mutex; ///< guards the file; both loggers are called from any thread
    QByteArray early; ///< logged before open()
    bool isDecided = false; ///< open() was called
    bool showsOnTerminal = false;
};

/// Where the log goes by default: a file of this user in the folder for temporary files.
QString defaultLogFile();

} // namespace scribo::host
