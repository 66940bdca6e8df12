#include "engine/sequencestore.h"

#include <QFile>
#include <QSaveFile>

#include <utility>

namespace scribo::line {

SequenceStore::SequenceStore(QString path)
    : path(std::move(path))
{
}

Result<std::uint64_t> SequenceStore::load() const
{
    QFile file(path);
    if (!file.exists()) {
        return 1;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(QStringLiteral("%1: %2").arg(path, file.errorString()).toStdString());
    }
    bool isNumber = false;
    const qulonglong next = file.read(64).trimmed().toULongLong(&isNumber);
    if (!isNumber || next == 0) {
        return failure(QStringLiteral("%1: holds no sequence number").arg(path).toStdString());
    }
    return next;
}

Result<void> SequenceStore::reserveBelow(std::uint64_t end) const
{
    QSaveFile file(path);
    const QByteArray digits = QByteArray::number(static_cast<qulonglong>(end)) + '\n';
    if (!file.open(QIODevice::WriteOnly) || file.write(digits) != digits.size() || !file.commit()) {
        return failure(QStringLiteral("%1: %2").arg(path, file.errorString()).toStdString());
    }
    return {};
}

} // namespace scribo::line
