#pragma once

#include "paramwrap.h"

namespace scribo::host {

/// The kinds of parameters, told apart by the names that they give themselves.

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

/// Whether its numbers have no fractions.
inline bool isWhole(ParamWrap& parameter)
{
    return isLine(parameter) && static_cast<LineEditParam&>(parameter).valueType == LineEditParam::IntValue;
}

} // namespace scribo::host
