#pragma once

#include <QString>
#include <QtGlobal>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

/// Collects the lines of Qt's message logger that this thread's code writes while it lives.
class QtLogCapture
{
public:
    struct Line
    {
        QtMsgType type;
        std::string text;
        std::string file; ///< base name of the source that wrote the line
        std::string function; ///< its signature

        bool operator==(const Line& other) const { return type == other.type && text == other.text; }
    };

    QtLogCapture()
    {
        current = this;
        previous = qInstallMessageHandler(&QtLogCapture::handle);
    }
    ~QtLogCapture()
    {
        qInstallMessageHandler(previous);
        current = nullptr;
    }
    QtLogCapture(const QtLogCapture&) = delete;
    QtLogCapture& operator=(const QtLogCapture&) = delete;

    /// What was written since the last call.
    std::vector<Line> take() { return std::exchange(captured, {}); }

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        const std::string path = context.file ? context.file : "";
        current->captured.push_back(
            {type, message.toStdString(), path.substr(path.rfind('/') + 1), context.function ? context.function : ""});
    }

    static inline QtLogCapture* current = nullptr;
    QtMessageHandler previous = nullptr;
    std::vector<Line> captured;
};

inline std::ostream& operator<<(std::ostream& stream, const QtLogCapture::Line& line)
{
    return stream << line.type << ' ' << line.file << " [" << line.function << "] " << line.text;
}
