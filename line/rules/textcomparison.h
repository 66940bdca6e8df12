#pragma once

#include "rules/characterrules.h"
#include "rules/expectation.h"

#include <QString>

namespace scribo::line {

/// How a reading differs from what was expected.
enum class TextDifference {
    none,
    text, ///< a character is another
    count, ///< characters are missing or too many
    pattern, ///< a part does not fit its pattern
};

/// The answer of a comparison.
struct TextComparison
{
    TextDifference difference = TextDifference::none;
    QString reason; ///< for people: "month is 10, expected 11"; empty when nothing differs
    QString expected; ///< the accepted text that the reading is, or is nearest to

    bool isOk() const { return difference == TextDifference::none; }
};

/// Judges a reading, and says what differs: the first part that does, of the accepted text that is nearest. A text
/// without match parts is also judged by the plug-in's own comparison, which comes to the same as long as no character
/// is in two groups. Ignored characters are left out of both sides.
TextComparison compareText(const QString& reading, const Expectation& expected, const CharacterRules& characters);

} // namespace scribo::line
