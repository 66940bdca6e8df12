#pragma once

#include "result.h"
#include "rules/daterule.h"
#include "rules/matchpattern.h"

#include <QString>

#include <variant>
#include <vector>

namespace scribo::line {

/// `{lot}`
struct LotField
{
};

/// `{counter}` or `{counter:0000}`
struct CounterField
{
    int digits = 0; ///< exactly as many, filled up with leading zeros; 0: as many as the number has
};

/// `{shift}`
struct ShiftField
{
};

/// A piece of a template: text that is printed as it stands, or what is between braces.
using TemplateElement = std::variant<QString, DateRule, LotField, CounterField, ShiftField, MatchPattern>;

/// Reads a template. An error says where it is and what was expected: "character 6: …".
Result<std::vector<TemplateElement>> parseTemplate(const QString& text);

} // namespace scribo::line
