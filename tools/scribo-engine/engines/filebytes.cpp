#include "filebytes.h"

#include "resulttext.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <climits>

namespace scribo::tool {

namespace {

/// QFile reads nothing of a file that does not fit a QByteArray, which needs some bytes of its 2 GB for itself.
constexpr qint64 largestFile = INT_MAX - 64;

} // namespace

Result<FileBytes> FileBytes::read(const QString& path)
{
    if (QFileInfo(path).isDir()) {
        return failure("this is a folder, not a file");
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(file.errorString());
    }
    if (file.size() > largestFile) {
        return failure("the file is larger than 2 GB, the most that can be read");
    }
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return failure(file.errorString());
    }
    constexpr std::size_t alignment = 64;
    FileBytes result;
    result.length = static_cast<std::size_t>(content.size());
    const std::size_t padded = (result.length / alignment + 1) * alignment;
    result.bytes.reset(std::aligned_alloc(alignment, padded));
    if (!result.bytes) {
        return failure("not enough memory to read it");
    }
    std::copy(content.begin(), content.end(), static_cast<char*>(result.bytes.get()));
    return result;
}

} // namespace scribo::tool
