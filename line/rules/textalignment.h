#pragma once

#include "rules/characterrules.h"
#include "rules/textpart.h"

#include <QString>

#include <vector>

namespace scribo::line {

/// What was read in the place of each part of an expected text.
struct TextAlignment
{
    std::vector<QString> read; ///< one for each part
    std::vector<bool> agrees; ///< whether this is the part's text; true for match parts
    QString before; ///< what was read before the first part
    QString after; ///< what was read after the last one
    int cost = 0; ///< characters that are wrong, missing or too many
};

/// Lays a reading beside an expected text so that the fewest characters are wrong, missing or too many. A match part
/// takes whatever lies between its neighbours. The time is that of the product of the two lengths.
TextAlignment alignText(const QString& reading, const AcceptedText& expected, const CharacterRules& characters);

} // namespace scribo::line
