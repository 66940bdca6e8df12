#pragma once

#include "core/verdict.h"
#include "history/sqlconnection.h"

#include <QStringList>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace scribo::line {

/// Which pictures are kept with the history.
enum class KeptPictures {
    none,
    ng,
    all,
};

/// Writes whole pictures beside the history as PNG files, a folder a day, in a thread of its own.
///
///     FOLDER/2026-11-21/STATION-0000000123.png
class PictureKeeper
{
public:
    PictureKeeper(QString folder, QString station, KeptPictures kept);
    /// Writes what waits and ends.
    ~PictureKeeper();
    PictureKeeper(const PictureKeeper&) = delete;
    PictureKeeper& operator=(const PictureKeeper&) = delete;

    /// Hands the picture of a verdict over, and returns its file below the folder. Empty: it is not kept, because there
    /// is none, it is not wanted, or 20 wait already.
    QString keep(const Verdict& verdict);

    /// Deletes these files, and their folder where it is empty then.
    void discard(const QStringList& files);

    /// What is wrong, for people; empty: nothing.
    QString fault() const;

    static constexpr std::size_t mostWaiting = 20;

private:
    struct Waiting
    {
        QString file;
        SharedPicture picture;
    };

    void run();
    bool write(const Waiting& one) const;

    const QString folder;
    const QString station;
    const KeptPictures kept;
    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    std::deque<Waiting> waiting;
    bool isEnding = false;
    bool hasFailed = false; ///< the newest could not be written
    std::thread thread;
};

} // namespace scribo::line
