#include "sources/watchedfoldersource.h"

#include "files/picturereader.h"
#include "resulttext.h"
#include "sources/wholepicture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace scribo::line {

namespace {

/// How often a waiting take() looks whether it was interrupted.
constexpr std::chrono::milliseconds step{100};

tl::unexpected<CaptureError> fault(CaptureFault kind, const QString& message)
{
    return tl::unexpected(CaptureError{kind, message});
}

} // namespace

WatchedFolderSource::WatchedFolderSource(WatchedFolderOptions options)
    : options(std::move(options))
{
}

WatchedFolderSource::~WatchedFolderSource() = default;

void WatchedFolderSource::open(Mode /*mode*/)
{
    isInterrupted = false;
    arrivals = std::make_unique<Arrivals>(options.folder);
}

Result<void> WatchedFolderSource::configure(const QJsonObject& /*settings*/)
{
    return {};
}

tl::expected<Frame, CaptureError> WatchedFolderSource::take(std::chrono::milliseconds timeout)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!isInterrupted) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        const std::optional<QString> name = arrivals->next(std::clamp(left, std::chrono::milliseconds(0), step));
        if (name) {
            return takeFile(*name);
        }
        if (!arrivals->isThere()) {
            return fault(CaptureFault::lost, watch());
        }
        if (left <= step) {
            return fault(CaptureFault::timeout, QStringLiteral("no picture arrived in %1").arg(options.folder));
        }
    }
    return fault(CaptureFault::interrupted, QStringLiteral("the source was interrupted"));
}

tl::expected<Frame, CaptureError> WatchedFolderSource::takeFile(const QString& name)
{
    const QString path = QDir(options.folder).filePath(name);
    Frame frame;
    frame.name = name;
    frame.takenAt = QFileInfo(path).lastModified().toUTC();
    if (!isWholePicture(path)) {
        putAway(name, QStringLiteral("unreadable"));
        return fault(CaptureFault::incomplete, QStringLiteral("%1: the file is cut off").arg(name));
    }
    Result<cv::Mat> picture = host::readPicture(path);
    if (!picture) {
        putAway(name, QStringLiteral("unreadable"));
        return fault(CaptureFault::incomplete, QStringLiteral("%1: %2").arg(name, textOf(picture.error())));
    }
    frame.picture = std::move(*picture);
    putAway(name, options.removes ? QString() : QStringLiteral("done"));
    return frame;
}

/// Moves a file into a subfolder, in the place of one of its name, or deletes it. Where neither can be done it is left
/// out from now on: no picture is judged twice.
void WatchedFolderSource::putAway(const QString& name, const QString& subfolder)
{
    const QDir folder(options.folder);
    const QString target = subfolder + QLatin1Char('/') + name;
    const bool isKept = !subfolder.isEmpty() && folder.mkpath(subfolder)
        && (!folder.exists(target) || QFile::remove(folder.filePath(target)))
        && QFile::rename(folder.filePath(name), folder.filePath(target));
    if (!isKept && !QFile::remove(folder.filePath(name))) {
        arrivals->leaveOut(name);
    }
}

QString WatchedFolderSource::watch()
{
    return arrivals && !arrivals->isThere() ? QStringLiteral("%1: there is no such folder").arg(options.folder)
                                            : QString();
}

void WatchedFolderSource::interrupt()
{
    isInterrupted = true;
}

void WatchedFolderSource::close()
{
    arrivals.reset();
}

QString WatchedFolderSource::description() const
{
    return QStringLiteral("watched folder %1").arg(options.folder);
}

} // namespace scribo::line
