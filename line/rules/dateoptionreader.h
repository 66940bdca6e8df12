#pragma once

#include "result.h"
#include "rules/daterule.h"
#include "rules/templatepiece.h"

#include <vector>

namespace scribo::line {

/// From our years to those of Taiwan's calendar, which have three digits.
constexpr int minguoOffset = -1911;

/// Reads the options of a date, as +18 months, into a rule whose format was read before.
Result<void> readDateOptions(const std::vector<TemplatePiece>& options, DateRule* rule);

} // namespace scribo::line
