#pragma once

#include "processorinterface.h"
#include "result.h"

#include <QString>

/// The settings of a processor in a JSON file, as its saveParams() writes them: the key "paramsWrap" with an
/// array of one object for each parameter, by position. Other keys are kept for other readers and ignored.

/// Puts the settings into the processor's parameters; loadParams() then makes them work, which loads the
/// model. Values of other types than the parameters' own are a mistake, missing ones are not. The
/// error starts with the file; the parameters are then as they were.
scribo::Result<void> readSettings(const QString& path, ProcessorInterface& processor);

/// Replaces the file as a whole or not at all. The error starts with the file.
scribo::Result<void> writeSettings(const QString& path, ProcessorInterface& processor);
