#include "wholefile.h"

#include "resulttext.h"

#include <QFileInfo>
#include <QSaveFile>

namespace scribo {

bool isReplaceable(const QString& path)
{
    const QFileInfo info(path);
    return !info.exists() || info.isFile();
}

Result<void> writeWholeFile(const QString& path, const void* bytes, std::size_t size)
{
    if (!isReplaceable(path)) {
        return failure("this is no file that could be replaced");
    }
    QSaveFile file(path);
    const auto length = static_cast<qint64>(size);
    // Without the flush a small file meets a full disk inside commit(), which does not notice.
    if (!file.open(QIODevice::WriteOnly) || file.write(static_cast<const char*>(bytes), length) != length
        || !file.flush() || !file.commit()) {
        return failure(file.errorString());
    }
    return {};
}

Result<void> writeWholeFile(const QString& path, const QByteArray& bytes)
{
    return writeWholeFile(path, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

} // namespace scribo
