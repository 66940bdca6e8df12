#pragma once

#include "result.h"
#include "rules/textsettings.h"

#include <QString>

#include <optional>

namespace scribo::line {

/// What `scribo-line expect TEMPLATE` was told beside the template.
struct ExpectOptions
{
    QString at; ///< a local time like 2026-11-21T05:59, with seconds or without; empty: now
    QString lot;
    std::optional<qint64> counter;
    TextSettings settings;
};

/// The texts that would be expected, the one of that moment first, each on a line of its own. A match part stands
/// there as in the template. Fails on a fault of the template, on what is missing, and on a time that cannot be read.
Result<QString> expectCommand(const QString& text, const ExpectOptions& options, const LineClock& clock);

} // namespace scribo::line
