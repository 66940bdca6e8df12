#pragma once

#include <QFile>

#include <unistd.h>

/// The memory that this process occupies, in bytes; -1 when the system does not tell.
inline qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    return file.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE);
}
