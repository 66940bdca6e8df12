#pragma once

#include "result.h"

#include <QByteArray>
#include <QString>

/// What to return when `path` could not be written: the path with the reason.
tl::unexpected<scribo::Error> unwritable(const QString& path, const QString& reason);

/// Writes a file as scribo::writeWholeFile() does. The error starts with the file.
scribo::Result<void> saveOutput(const QString& path, const QByteArray& bytes);
