#include "loadedengine.h"

#include <QFile>
#include <QFileInfo>

namespace scribo::tool {

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
