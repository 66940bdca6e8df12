#include "savefile.h"

#include <QFileInfo>
#include <QSaveFile>

namespace scribo::tool {

bool saveFile(const QString& path, const void* bytes, std::size_t size, QString* error)
{
    // Replacing a device by a file is never what was meant.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        *error = QStringLiteral("this is no file that could be replaced");
        return false;
    }
    QSaveFile file(path);
    const auto length = static_cast<qint64>(size);
    // Without the flush a small file meets a full disk inside commit(), which does not notice.
    if (!file.open(QIODevice::WriteOnly) || file.write(static_cast<const char*>(bytes), length) != length
        || !file.flush() || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

bool isSameFile(const QString& first, const QString& second)
{
    const QString path = QFileInfo(first).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(second).canonicalFilePath();
}

} // namespace scribo::tool
