#include "history/picturekeeper.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <utility>

namespace scribo::line {

namespace {

/// PNG's quality in Qt: 100 is no compression at all, 0 the strongest. This one takes a fifth of the time of the
/// strongest for files a tenth larger.
constexpr int quality = 80;

} // namespace

PictureKeeper::PictureKeeper(QString folder, QString station, KeptPictures kept)
    : folder(std::move(folder))
    , station(std::move(station))
    , kept(kept)
    , thread([this] { run(); })
{
}

PictureKeeper::~PictureKeeper()
{
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
    }
    changed.notify_all();
    thread.join();
}

QString PictureKeeper::keep(const Verdict& verdict)
{
    const bool isWanted = kept == KeptPictures::all || (kept == KeptPictures::ng && !verdict.isOk);
    if (!isWanted || !verdict.picture || verdict.picture->empty()) {
        return {};
    }
    constexpr int digits = 10;
    QString file = QStringLiteral("%1/%2-%3.png")
                       .arg(verdict.takenAt.toUTC().toString(QStringLiteral("yyyy-MM-dd")), station)
                       .arg(verdict.sequence, digits, 10, QLatin1Char('0'));
    {
        const std::lock_guard lock(mutex);
        if (waiting.size() >= mostWaiting) {
            return {};
        }
        waiting.push_back({file, verdict.picture});
    }
    changed.notify_all();
    return file;
}

void PictureKeeper::discard(const QStringList& files)
{
    const QDir base(folder);
    for (const QString& file : files) {
        QFile::remove(base.filePath(file));
        base.rmdir(QFileInfo(file).path()); // fails while others are in it
    }
}

QString PictureKeeper::fault() const
{
    const std::lock_guard lock(mutex);
    return hasFailed ? QStringLiteral("%1: pictures cannot be written").arg(folder) : QString();
}

void PictureKeeper::run()
{
    std::unique_lock lock(mutex);
    while (!isEnding || !waiting.empty()) {
        if (waiting.empty()) {
            changed.wait(lock);
            continue;
        }
        const Waiting one = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        const bool isWritten = write(one);
        lock.lock();
        hasFailed = !isWritten;
    }
}

bool PictureKeeper::write(const Waiting& one) const
{
    const QString path = QDir(folder).filePath(one.file);
    const cv::Mat& picture = *one.picture;
    const auto format = picture.channels() == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB888;
    const QImage image(picture.data, picture.cols, picture.rows, static_cast<int>(picture.step), format);
    const QString unfinished = path + QStringLiteral(".part");
    const bool isWritten = QDir().mkpath(QFileInfo(path).path()) && image.save(unfinished, "PNG", quality);
    if (!isWritten || !QFile::rename(unfinished, path)) {
        QFile::remove(unfinished);
        return false;
    }
    return true;
}

} // namespace scribo::line
