#pragma once

#include "result.h"
#include "rules/daterule.h"

#include <QString>

namespace scribo::line {

/// Reads what stands between "{date:" and "}" in a template: FORMAT;OPTION;... `index`: where it begins there, from 0,
/// for the messages.
Result<DateRule> parseDate(const QString& body, int index);

} // namespace scribo::line
