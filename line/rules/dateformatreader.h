#pragma once

#include "result.h"
#include "rules/daterule.h"
#include "rules/templatepiece.h"

namespace scribo::line {

/// Reads the format of a date, as in dd.MM.yyyy, into the elements of a rule.
Result<void> readDateFormat(const TemplatePiece& format, DateRule* rule);

} // namespace scribo::line
