#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

/// Finds removable disks in a Linux mount table.
///
/// The system disk is the disk of the last partition in the table whose file system is one of the ext
/// family; a removable disk is any other SCSI-like partition (/dev/sdb1, …) mounted below /media/root.
/// So a removable disk that is itself formatted ext4 takes the place of the system disk and is not found.
///
/// Not thread-safe: belongs to the thread that inspects.
class MountTable
{
public:
    /// Answers whether a file of the given name exists.
    using FileTest = std::function<bool(const QString&)>;

    /// `path` names the table. It is read at every call, since disks come and go.
    explicit MountTable(QString path = QStringLiteral("/proc/mounts"), FileTest fileExists = {});

    /// The mount points of the removable disks, in the order of the table, as the table writes them: the
    /// kernel escapes blanks there, so a disk labelled "MY DISK" reads "MY\040DISK".
    /// Empty when there is no removable disk, no system disk to tell it from, or the table cannot be read.
    QStringList findRemovableMounts();

private:
    QString path;
    FileTest fileExists;
    QByteArray mountsSnapshot; ///< the table at the last parse: the same text is not parsed again
    QStringList removableMounts; ///< what that parse found
};
