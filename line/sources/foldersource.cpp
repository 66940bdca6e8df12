#include "sources/foldersource.h"

#include "files/picturelist.h"
#include "files/picturereader.h"
#include "resulttext.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace scribo::line {

FolderSource::FolderSource(FolderOptions options)
    : options(std::move(options))
{
}

void FolderSource::open(Mode newMode)
{
    mode = newMode;
    next = 0;
    turn = std::chrono::steady_clock::now();
    {
        const std::lock_guard lock(mutex);
        hasInterruption = false;
    }
    list();
}

void FolderSource::list()
{
    files.clear();
    const QList<host::PictureFile> found = host::listPictures({options.folder}, QDir::current());
    for (const host::PictureFile& picture : found) {
        if (picture.fault.isEmpty()) {
            files.append(picture.path);
        }
    }
}

Result<void> FolderSource::configure(const QJsonObject& /*settings*/)
{
    return {};
}

tl::expected<Frame, CaptureError> FolderSource::take(std::chrono::milliseconds timeout)
{
    bool isInterrupted = false;
    if (!waitForTurn(timeout, &isInterrupted)) {
        return tl::unexpected(isInterrupted
                ? CaptureError{CaptureFault::interrupted, QStringLiteral("the source was interrupted")}
                : CaptureError{CaptureFault::timeout, QStringLiteral("the next picture is not due yet")});
    }
    if (files.isEmpty()) {
        list();
    }
    if (files.isEmpty()) {
        return tl::unexpected(CaptureError{CaptureFault::lost, watch()});
    }
    if (next == files.size() && options.repeats) {
        next = 0;
    }
    if (next == files.size()) {
        return tl::unexpected(
            CaptureError{CaptureFault::ended, QStringLiteral("%1: there are no more pictures").arg(options.folder)});
    }
    const QString path = files[next++];
    turn = std::max(turn + options.interval, std::chrono::steady_clock::now());
    Frame frame;
    frame.name = QFileInfo(path).fileName();
    frame.takenAt = QDateTime::currentDateTimeUtc();
    Result<cv::Mat> picture = host::readPicture(path);
    if (!picture) {
        return tl::unexpected(
            CaptureError{CaptureFault::incomplete, QStringLiteral("%1: %2").arg(frame.name, textOf(picture.error()))});
    }
    frame.picture = std::move(*picture);
    return frame;
}

/// A free source shows its pictures at their times; a triggered one at once. False: it is not time yet.
bool FolderSource::waitForTurn(std::chrono::milliseconds timeout, bool* isInterrupted)
{
    std::unique_lock lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (mode == Mode::free && turn > now) {
        changed.wait_until(lock, std::min(turn, now + timeout), [this] { return hasInterruption; });
    }
    *isInterrupted = hasInterruption;
    return !hasInterruption && (mode == Mode::triggered || std::chrono::steady_clock::now() >= turn);
}

QString FolderSource::watch()
{
    if (!files.isEmpty()) {
        return {};
    }
    return QFileInfo(options.folder).isDir() ? QStringLiteral("%1: holds no picture").arg(options.folder)
                                             : QStringLiteral("%1: there is no such folder").arg(options.folder);
}

void FolderSource::interrupt()
{
    {
        const std::lock_guard lock(mutex);
        hasInterruption = true;
    }
    changed.notify_all();
}

void FolderSource::close()
{
    files.clear();
}

QString FolderSource::description() const
{
    return QStringLiteral("folder %1").arg(options.folder);
}

} // namespace scribo::line
