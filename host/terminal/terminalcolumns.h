#pragma once

#include <QString>

namespace scribo::host {

/// The columns that a text takes in a terminal: two for a Chinese character, none for an accent that is set over the
/// letter before it.
int terminalColumns(const QString& text);

/// The text and as many spaces as fill up `columns`.
QString paddedTo(int columns, const QString& text);

} // namespace scribo::host
