#include "samefile.h"

#include <QFileInfo>

namespace scribo::tool {

bool isSameFile(const QString& first, const QString& second)
{
    const QString path = QFileInfo(first).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(second).canonicalFilePath();
}

} // namespace scribo::tool
