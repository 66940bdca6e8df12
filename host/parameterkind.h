#pragma once

#include "paramwrap.h"

namespace scribo::host {

/// The kinds of parameters. A parameter says its kind by its type name.

inline bool isKind(ParamWrap& parameter, const char* name)
{
    return parameter.typeName() == QLatin1String(name);
}

inline bool isChoice(ParamWrap& parameter)
{
    return isKind(parameter, "RadioBoxParam") || isKind(parameter, "CheckBoxParam");
}

inline bool isLine(ParamWrap& parameter)
{
    return isKind(parameter, "LineEditParam") || isKind(parameter, "LimitLineEditParam");
}

/// Whether it holds whole numbers.
inline bool isWhole(ParamWrap& parameter)
{
    return isLine(parameter) && static_cast<LineEditParam&>(parameter).valueType == LineEditParam::IntValue;
}

} // namespace scribo::host
