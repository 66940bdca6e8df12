#include "files/jsonfile.h"

#include "resulttext.h"

#include <QFile>
#include <QJsonParseError>

namespace scribo::host {

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

Result<QJsonDocument> readJsonFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(path + QStringLiteral(": cannot be opened: ") + file.errorString());
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return failure(path + QStringLiteral(": cannot be read: ") + file.errorString());
    }
    QJsonParseError parseError;
    QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        return failure(
            QStringLiteral("%1:%2: not JSON: %3").arg(path, place(bytes, parseError.offset), parseError.errorString()));
    }
    return document;
}

} // namespace scribo::host
