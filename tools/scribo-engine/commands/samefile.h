#pragma once

#include <QString>

namespace scribo::tool {

/// Whether both lead to one file that exists, through symbolic links as well, so that saving the one would replace the
/// other.
bool isSameFile(const QString& first, const QString& second);

} // namespace scribo::tool
