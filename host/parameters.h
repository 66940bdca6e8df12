#pragma once

#include "processorinterface.h"
#include "result.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace scribo::host {

/// The processor's parameters by their number from 1, as texts that people read and write.

/// The parameter in its persisted form; empty when there is no such parameter.
QJsonObject parameterState(ProcessorInterface& processor, int number);

/// The value for people: a choice group with all its choices, the chosen ones in brackets.
QString describeParameter(ParamWrap& parameter);

/// Sets a parameter from a text:
///
/// - a drop-down list: an entry, or the beginning of exactly one
/// - a choice: the choice's number from 1 or its label
/// - independent choices: "on" or "off" for each of them, separated by commas
/// - a number with limits: "LOW:HIGH" for the limits, a number for the value
/// - a number or a text: as it is
///
/// Headings, and values that the processor itself writes, cannot be set. After an error the parameter is as
/// it was.
Result<void> setParameter(ProcessorInterface& processor, int number, const QString& value);

/// The same for "NUMBER=VALUE".
Result<void> setParameter(ProcessorInterface& processor, const QString& assignment);

/// The models that the processor offers, in its order; empty when it has no such list.
QStringList modelNames(ProcessorInterface& processor);

} // namespace scribo::host
