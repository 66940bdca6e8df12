#include "wholefile.h"

#include <QFileInfo>
#include <QSaveFile>

bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error)
{
    // Replacing a device by a file is never what was meant.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        *error = path + QStringLiteral(": is no file that could be replaced");
        return false;
    }
    QSaveFile file(path);
    // Without the flush a small file meets a full disk inside commit(), which does not notice.
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() && file.commit()) {
        return true;
    }
    *error = path + QStringLiteral(": cannot be written: ") + file.errorString();
    return false;
}
