#include "jsonfile.h"

#include <QFile>
#include <QJsonParseError>

namespace {

/// "LINE:COLUMN" of a byte, both from 1; columns count characters.
QString place(const QByteArray& bytes, int offset)
{
    const QByteArray before = bytes.left(offset);
    const int line = before.count('\n') + 1;
    const int column = QString::fromUtf8(before.mid(before.lastIndexOf('\n') + 1)).size() + 1;
    return QStringLiteral("%1:%2").arg(line).arg(column);
}

} // namespace

bool readJsonFile(const QString& path, QJsonDocument* document, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = path + QStringLiteral(": cannot be opened: ") + file.errorString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *error = path + QStringLiteral(": cannot be read: ") + file.errorString();
        return false;
    }
    QJsonParseError parseError;
    *document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error == QJsonParseError::NoError) {
        return true;
    }
    *error = QStringLiteral("%1:%2: not JSON: %3").arg(path, place(bytes, parseError.offset), parseError.errorString());
    return false;
}
