#pragma once

#include <QDateTime>
#include <QMap>
#include <QString>

#include <chrono>
#include <optional>

namespace scribo::line {

/// Finds out which files of a folder have arrived whole.
///
/// The kernel says (inotify) when a file is being written, closed or renamed into the folder. Over a network it says
/// nothing; then a file is whole when it has not changed for half a second and ends as its format ends. One that does
/// not, or whose writer holds it open, is given after ten seconds without a change.
class Arrivals
{
public:
    explicit Arrivals(const QString& folder);
    ~Arrivals();
    Arrivals(const Arrivals&) = delete;
    Arrivals& operator=(const Arrivals&) = delete;

    /// The whole file that arrived first, by its name in the folder; waits at most `timeout` for one. The same file is
    /// given again until it is gone or left out.
    std::optional<QString> next(std::chrono::milliseconds timeout);

    /// Gives this file no more, unless it changes.
    void leaveOut(const QString& name);

    /// Whether the folder is there.
    bool isThere() const;

private:
    using Clock = std::chrono::steady_clock;

    struct File
    {
        qint64 size = -1;
        QDateTime changedAt; ///< as the file system says
        Clock::time_point since; ///< no change has been seen after
        quint64 order = 0; ///< of its arrival
        bool isBeingWritten = false; ///< the kernel saw a write, and no end of it
        bool isClosed = false; ///< the kernel saw the end
        bool isLeftOut = false;
    };

    void connect();
    void readEvents();
    void look();
    bool isWhole(const QString& name, const File& file) const;

    const QString folder;
    int events; ///< file descriptor of the kernel's news
    int watched = -1; ///< its number for the folder; -1: it is not watched
    QMap<QString, File> files;
    quint64 arrived = 0;
};

} // namespace scribo::line
