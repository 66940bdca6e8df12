#pragma once

#include "processorinterface.h"
#include "result.h"

#include <QJsonObject>

namespace scribo::host {

/// The settings of a processor as its saveParams() writes them: the key "paramsWrap" with an array of one object for
/// each parameter, by position. Other keys are kept for other readers and ignored.

/// Puts the settings into the processor's parameters; activateSettings() then makes them work. Values of other types
/// than the parameters' own are a mistake, missing ones are not. After an error the parameters are as they were.
Result<void> applySettings(const QJsonObject& settings, ProcessorInterface& processor);

/// The settings as they are now, with what the processor has learned.
QJsonObject currentSettings(ProcessorInterface& processor);

/// Makes the processor work with its parameters as they are now, which loads the model. Called once after all
/// parameters are set, it loads the model once.
void activateSettings(ProcessorInterface& processor);

} // namespace scribo::host
