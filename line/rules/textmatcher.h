#pragma once

#include "rules/characterrules.h"
#include "rules/matchpattern.h"
#include "rules/textpart.h"

#include <QString>

#include <vector>

namespace scribo::line {

/// Whether a reading is the accepted text: its fixed parts character by character, and what lies between them by the
/// patterns of the match parts. Every way to divide the reading is tried, and each try is taken off `triesLeft`.
MatchPattern::Outcome matchText(const QString& reading, const AcceptedText& accepted,
    const std::vector<MatchPattern>& patterns, const CharacterRules& characters, int* triesLeft);

} // namespace scribo::line
