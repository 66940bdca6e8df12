#include "loadedengine.h"

#include <QFile>
#include <QFileInfo>

#include <climits>

namespace scribo::tool {

namespace {

/// QFile reads nothing of a file that does not fit a QByteArray, which needs some bytes of its 2 GB for itself.
constexpr qint64 largestFile = INT_MAX - 64;

} // namespace

bool FileBytes::read(const QString& path, QString* error)
{
    if (QFileInfo(path).isDir()) {
        *error = QStringLiteral("this is a folder, not a file");
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return false;
    }
    if (file.size() > largestFile) {
        *error = QStringLiteral("the file is larger than 2 GB, the most that can be read");
        return false;
    }
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *error = file.errorString();
        return false;
    }
    constexpr std::size_t alignment = 64;
    length = static_cast<std::size_t>(content.size());
    const std::size_t padded = (length / alignment + 1) * alignment;
    bytes.reset(std::aligned_alloc(alignment, padded));
    if (!bytes) {
        *error = QStringLiteral("not enough memory to read it");
        return false;
    }
    std::copy(content.begin(), content.end(), static_cast<char*>(bytes.get()));
    return true;
}

bool LoadedEngine::read(const QString& path, QString* error)
{
    if (!bytes.read(path, error)) {
        return false;
    }
    std::string reason;
    root = format::readEngine(bytes.data(), bytes.size(), &reason);
    *error = QString::fromStdString(reason);
    return root != nullptr;
}

} // namespace scribo::tool
