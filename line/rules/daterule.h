#pragma once

#include "result.h"
#include "rules/localmoment.h"
#include "rules/monthnames.h"
#include "rules/textpart.h"
#include "rules/textsettings.h"

#include <QDate>
#include <QMap>
#include <QString>
#include <QTime>

#include <optional>
#include <vector>

namespace scribo::line {

/// What a piece of a date is worked out from.
enum class DateValue {
    year,
    isoYear, ///< the year of the ISO week
    month,
    monthName,
    shortMonthName,
    day,
    dayOfYear,
    isoWeek,
    weekday, ///< from Monday, 1
    quarter,
    hour,
    hour12,
    minute,
    second,
    dayHalf,
};

/// A piece of a date as it is written in a format.
struct DateToken
{
    const char* spelling;
    PartKind part;
    DateValue value;
    int digits; ///< filled up with leading zeros
    int modulo; ///< what is printed is the remainder; 0: all of it
    int first; ///< the values that a table needs entries for; 0 and -1 where these depend on the year
    int last;
};

/// The token of this spelling; null: there is none.
const DateToken* dateToken(const QString& spelling);

/// A token, or text that is printed as it stands.
struct DateElement
{
    const DateToken* token = nullptr; ///< null: it is text
    QString text;
};

/// Days, weeks, months or years.
enum class DateUnit { day, week, month, year };

/// One step from the production day to the date that is printed.
struct DateStep
{
    enum class Kind { add, start, end };

    Kind kind = Kind::add;
    DateUnit unit = DateUnit::day;
    int count = 0; ///< of an addition, may be negative
};

enum class LetterCase { asWritten, upper, lower };

/// A `{date:…}` of a template.
struct DateRule
{
    std::vector<DateElement> elements;
    std::vector<DateStep> steps;
    std::optional<QTime> dayBegin; ///< none: that of the settings
    Language language = Language::english;
    LetterCase letterCase = LetterCase::asWritten;
    int yearOffset = 0; ///< from our years to those of another calendar
    QMap<PartKind, QString> tables; ///< names of tables that replace numbers

    /// Whether a token is worked out from this value.
    bool shows(DateValue value) const;

    /// Tables that are missing, or lack entries that will be needed, one sentence each.
    QStringList faults(const TextSettings& settings) const;

    /// Appends the parts for a moment. Fails on a date beyond the years 1900 to 2999, and where a table has no entry.
    Result<void> expand(const LocalMoment& moment, const TextSettings& settings, std::vector<TextPart>* parts) const;
};

/// The date after the steps, in their order. A month or year that lacks the day ends at its last day: 31 January and
/// one month make 28 or 29 February. Weeks begin on Monday.
QDate stepped(QDate date, const std::vector<DateStep>& steps);

} // namespace scribo::line
