#include "sources/arrivals.h"

#include "sources/wholepicture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace scribo::line {

namespace {

using namespace std::chrono_literals;

constexpr auto lookInterval = 50ms; ///< between two looks at the folder
constexpr auto quietTime = 500ms; ///< a file that has not changed for so long may be whole
constexpr auto patience = 10s; ///< a file that has not changed for so long will not become more whole

const QStringList patterns{QStringLiteral("*.png"), QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"),
    QStringLiteral("*.bmp"), QStringLiteral("*.tif"), QStringLiteral("*.tiff"), QStringLiteral("*.pgm"),
    QStringLiteral("*.ppm")};

} // namespace

Arrivals::Arrivals(const QString& folder)
    : folder(folder)
    , events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    connect();
}

Arrivals::~Arrivals()
{
    if (events >= 0) {
        ::close(events);
    }
}

bool Arrivals::isThere() const
{
    return QFileInfo(folder).isDir();
}

void Arrivals::connect()
{
    if (events >= 0 && watched < 0) {
        watched = inotify_add_watch(events, QFile::encodeName(folder).constData(),
            IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
    }
}

std::optional<QString> Arrivals::next(std::chrono::milliseconds timeout)
{
    const auto end = Clock::now() + timeout;
    while (true) {
        connect();
        readEvents();
        look();
        const QString* first = nullptr;
        for (auto file = files.constBegin(); file != files.constEnd(); ++file) {
            const bool isEarlier = first == nullptr || file->order < files.constFind(*first)->order;
            if (isEarlier && isWhole(file.key(), *file)) {
                first = &file.key();
            }
        }
        if (first != nullptr) {
            return *first;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        if (left <= 0ms) {
            return std::nullopt;
        }
        pollfd news{events, POLLIN, 0};
        ::poll(&news, events >= 0 ? 1 : 0,
            static_cast<int>(std::min(left, std::chrono::milliseconds(lookInterval)).count()));
    }
}

void Arrivals::readEvents()
{
    alignas(inotify_event) std::array<char, 16384> buffer{};
    ssize_t size = 0;
    while (events >= 0 && (size = ::read(events, buffer.data(), buffer.size())) > 0) {
        for (ssize_t at = 0; at < size;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            at += static_cast<ssize_t>(sizeof(inotify_event)) + event->len;
            if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
                watched = -1;
            }
            if (event->len == 0) {
                continue;
            }
            File& file = files[QFile::decodeName(event->name)];
            file.isClosed = (event->mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0;
            file.isBeingWritten = !file.isClosed;
            file.since = Clock::now();
        }
    }
}

/// Brings `files` up to date with the folder.
void Arrivals::look()
{
    const QFileInfoList found = QDir(folder).entryInfoList(patterns, QDir::Files, QDir::Time | QDir::Reversed);
    QSet<QString> names;
    for (const QFileInfo& info : found) {
        names.insert(info.fileName());
        File& file = files[info.fileName()];
        if (file.order == 0) {
            file.order = ++arrived;
            file.since = Clock::now();
        }
        if (file.size != info.size() || file.changedAt != info.lastModified()) {
            file.size = info.size();
            file.changedAt = info.lastModified();
            file.since = Clock::now();
            file.isLeftOut = false;
        }
    }
    for (auto file = files.begin(); file != files.end();) {
        file = names.contains(file.key()) ? std::next(file) : files.erase(file);
    }
}

bool Arrivals::isWhole(const QString& name, const File& file) const
{
    const auto quiet = Clock::now() - file.since;
    if (file.isLeftOut || quiet >= patience) {
        return !file.isLeftOut;
    }
    // A writer may close a file and go on in it later: it counts only when it ends as a picture.
    return !file.isBeingWritten && (file.isClosed || quiet >= quietTime) && isWholePicture(QDir(folder).filePath(name));
}

void Arrivals::leaveOut(const QString& name)
{
    files[name].isLeftOut = true;
}

} // namespace scribo::line
