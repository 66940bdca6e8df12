#pragma once

#include <QString>

#include <vector>

namespace scribo::line {

/// What a part of an expected text says.
enum class PartKind {
    text, ///< stands in the template as it is printed
    day,
    month,
    year,
    week,
    weekday,
    dayOfYear,
    quarter,
    hour,
    minute,
    second,
    dayHalf, ///< AM or PM
    shift,
    lot,
    counter,
    match, ///< varies, and has to fit a pattern
};

/// The part's name in a sentence: "month", "day of the year".
QString partName(PartKind kind);

/// One part of an expected text.
struct TextPart
{
    PartKind kind = PartKind::text;
    QString text; ///< as it is printed; of a match part the pattern
    int pattern = -1; ///< of a match part: which of the patterns it has to fit, else -1
};

/// A text that is right, in its parts.
struct AcceptedText
{
    std::vector<TextPart> parts;

    /// The text as it is printed; a match part is shown as it stands in a template, {match:PATTERN}.
    QString text() const;
};

} // namespace scribo::line
