#pragma once

#include <QString>

#include <cstddef>

namespace scribo::tool {

/// Writes a file whole or not at all. False, with a sentence in `error`, when it cannot be written.
bool saveFile(const QString& path, const void* bytes, std::size_t size, QString* error);

/// Whether both lead to one file that exists, through symbolic links as well, so that saving the one
/// would replace the other.
bool isSameFile(const QString& first, const QString& second);

} // namespace scribo::tool
