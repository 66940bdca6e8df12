#pragma once

#include "result.h"

#include <QString>
#include <QStringList>

namespace scribo::tool {

/// The characters that a model tells apart, in class order, without the blank.
struct Keys
{
    /// One UTF-16 code unit each, as a configuration file has them. A character beyond U+FFFF, which
    /// does not fit one, is U+FFFD here: it can be read and never equals a reference.
    QString alphabet;
    /// What a user should know of them.
    QStringList notes;
};

/// Reads a file of keys: UTF-8, one character a line or all characters in one line. The error
/// says what else is in it.
Result<Keys> readKeys(const QString& path);

} // namespace scribo::tool
