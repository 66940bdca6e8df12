#pragma once

#include <glog/logging.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

/// Collects the glog lines that any thread writes while it lives.
class LogCapture : public google::LogSink
{
public:
    struct Line
    {
        google::LogSeverity severity;
        std::string file; ///< base name of the source that wrote the line
        int number; ///< and where in it
        std::string text;

        bool operator==(const Line& other) const
        {
            return severity == other.severity && file == other.file && text == other.text;
        }
    };

    LogCapture() { google::AddLogSink(this); }
    ~LogCapture() override { google::RemoveLogSink(this); }

    using google::LogSink::send;
    void send(google::LogSeverity severity, const char* /*fullFilename*/, const char* baseFilename, int line,
        const google::LogMessageTime& /*time*/, const char* message, std::size_t length) override
    {
        const std::lock_guard lock(mutex);
        captured.push_back({severity, baseFilename, line, std::string(message, length)});
        arrived.notify_all();
    }

    /// Waits until a line of exactly this text has been written; false if none comes.
    bool waitFor(const std::string& text)
    {
        std::unique_lock lock(mutex);
        return arrived.wait_for(lock, std::chrono::minutes(1), [&] {
            return std::any_of(captured.begin(), captured.end(), [&](const Line& line) { return line.text == text; });
        });
    }

    std::vector<Line> lines() const
    {
        const std::lock_guard lock(mutex);
        return captured;
    }

    /// The texts of one severity, in order.
    std::vector<std::string> texts(google::LogSeverity severity) const
    {
        std::vector<std::string> found;
        for (const Line& line : lines()) {
            if (line.severity == severity) {
                found.push_back(line.text);
            }
        }
        return found;
    }

    /// How many lines have exactly this text.
    std::ptrdiff_t count(const std::string& text) const
    {
        const std::vector<Line> all = lines();
        return std::count_if(all.begin(), all.end(), [&](const Line& line) { return line.text == text; });
    }

    void clear()
    {
        const std::lock_guard lock(mutex);
        captured.clear();
    }

private:
    mutable std::mutex mutex;
    std::condition_variable arrived;
    std::vector<Line> captured;
};

inline std::ostream& operator<<(std::ostream& stream, const LogCapture::Line& line)
{
    return stream << google::GetLogSeverityName(line.severity) << ' ' << line.file << ": " << line.text;
}
