#pragma once

#include "result.h"

#include <QDateTime>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QTime>
#include <QTimeZone>

#include <chrono>
#include <functional>
#include <optional>

namespace scribo::line {

/// What is printed for a number: a letter for each month, say.
using LetterTable = QMap<int, QString>;

/// What stays the same from item to item, of a station or a job.
struct TextSettings
{
    /// A grace window is no longer than this.
    static constexpr std::chrono::seconds longestGrace = std::chrono::hours(2);

    QTimeZone zone = QTimeZone::systemTimeZone(); ///< of the line
    QTime dayBegin = QTime(0, 0); ///< when the production day begins, in whole minutes
    std::chrono::seconds grace{0}; ///< every text is accepted that was or will be right within this of the trigger
    QMap<QString, LetterTable> tables; ///< by name
    QMap<QTime, QString> shifts; ///< what is printed, by the time at which the shift begins, in whole minutes
};

/// Reads settings; a missing key leaves the default. Fails on keys that are unknown and on values that cannot be meant.
///
///     {"timeZone": "Europe/Berlin",                           that of the machine otherwise
///      "dayBegins": "06:00", "graceMinutes": 10,
///      "shifts": {"06:00": "E", "14:00": "L", "22:00": "N"},
///      "tables": {"months": "ABCDEFGHJKLM",                 one character each, from 1
///                 "weekdays": ["MO", "TU", ...],            one text each, from 1
///                 "years": {"2026": "R", "2027": "S"}}}     by number
Result<TextSettings> textSettings(const QJsonObject& json);

/// What an item's text depends on.
struct TextContext
{
    QDateTime now; ///< of the trigger, in UTC
    QString lot; ///< empty: none is set
    std::optional<qint64> counter; ///< none: it is not set
};

/// What tells the time, in UTC. Tests put their own in its place.
using LineClock = std::function<QDateTime()>;

/// The machine's clock.
LineClock systemClock();

} // namespace scribo::line
