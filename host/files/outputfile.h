#pragma once

#include "result.h"

#include <QByteArray>
#include <QString>

namespace scribo::host {

/// What to return when `path` could not be written: the path with the reason.
tl::unexpected<Error> unwritable(const QString& path, const QString& reason);

/// Writes a file as writeWholeFile() does. The error starts with the file.
Result<void> saveOutput(const QString& path, const QByteArray& bytes);

} // namespace scribo::host
