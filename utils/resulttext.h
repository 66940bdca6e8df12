#pragma once

#include "result.h"

#include <QString>

/// Errors in Qt's texts.
namespace scribo {

inline tl::unexpected<Error> failure(const QString& message)
{
    return failure(message.toStdString());
}

/// A literal could else become either kind of text.
inline tl::unexpected<Error> failure(const char* message)
{
    return failure(std::string(message));
}

inline QString textOf(const Error& error)
{
    return QString::fromStdString(error.message);
}

} // namespace scribo
