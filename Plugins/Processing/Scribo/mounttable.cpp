#include "mounttable.h"

#include <QFile>
#include <QList>
#include <QRegularExpression>

#include <utility>

namespace {

struct Mount
{
    QString device;
    QString mountPoint;
    QString fileSystem;
};

/// The partitions of SCSI-like disks in `table`. The expression wants exactly one white-space character
/// between the fields, which is what the kernel writes.
QList<Mount> diskPartitions(const QByteArray& table)
{
    static const QRegularExpression partition(QStringLiteral(R"(^(/dev/sd\w\d+)\s(\S+)\s(\S+)\s.*)"));

    QList<Mount> mounts;
    const QStringList lines
        = QString::fromUtf8(table.constData(), table.size()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const QRegularExpressionMatch match = partition.match(line);
        if (match.hasMatch()) {
            mounts.append({match.captured(1), match.captured(2), match.captured(3)});
        }
    }
    return mounts;
}

QString diskOf(QString partition)
{
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    while (!partition.isEmpty() && isDigit(partition.back())) {
        partition.chop(1);
    }
    return partition;
}

QString systemDiskAmong(const QList<Mount>& mounts)
{
    QString systemDisk;
    for (const Mount& mount : mounts) {
        if (mount.fileSystem.contains(QLatin1String("ext"))) {
            systemDisk = diskOf(mount.device);
        }
    }
    return systemDisk;
}

} // namespace

MountTable::MountTable(QString path, FileTest fileExists)
    : path(std::move(path))
    , fileExists(fileExists ? std::move(fileExists) : [](const QString& name) { return QFile::exists(name); })
{
}

QStringList MountTable::findRemovableMounts()
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    // Files below /proc report a size of 0, but readAll() reads them to the end.
    const QByteArray table = file.readAll();
    if (table == mountsSnapshot) {
        return removableMounts;
    }

    mountsSnapshot = table;
    removableMounts.clear();
    const QList<Mount> mounts = diskPartitions(table);
    const QString systemDisk = systemDiskAmong(mounts);
    if (systemDisk.isEmpty() || !fileExists(systemDisk)) {
        return removableMounts;
    }
    for (const Mount& mount : mounts) {
        if (!mount.device.contains(systemDisk) && mount.mountPoint.contains(QLatin1String("/media/root"))) {
            removableMounts.append(mount.mountPoint);
        }
    }
    return removableMounts;
}
