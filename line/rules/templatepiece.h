#pragma once

#include "result.h"

#include <QString>

namespace scribo::line {

/// A piece of a template and where it begins there, from 0.
struct TemplatePiece
{
    QString text;
    int index = 0;
};

/// A fault of a template; `index` is where it is, from 0.
inline tl::unexpected<Error> templateFault(int index, const QString& message)
{
    return failure(QStringLiteral("character %1: ").arg(index + 1).toStdString() + message.toStdString());
}

} // namespace scribo::line
