#pragma once

#include "result.h"

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace scribo {

/// Whether writeWholeFile() would write to `path`: there is nothing yet, or a file. A device, a pipe or a folder is
/// not replaced by a file; symbolic links are followed.
bool isReplaceable(const QString& path);

/// Writes a file as a whole or not at all, in place of an earlier one: whoever opens it sees the old bytes or the new
/// ones, also when the disk is full or the power fails. The folder must be there. The error is the reason alone,
/// without the path.
Result<void> writeWholeFile(const QString& path, const void* bytes, std::size_t size);
Result<void> writeWholeFile(const QString& path, const QByteArray& bytes);

} // namespace scribo
