#pragma once

#include "processorinterface.h"

#include <QString>

/// The settings of a processor in a JSON file, as its saveParams() writes them: the key "paramsWrap" with an
/// array of one object for each parameter, by position. Other keys are kept for other readers and ignored.

/// Puts the settings into the processor's parameters; loadParams() then makes them work, which loads the
/// model. Values of other types than the parameters' own are a mistake, missing ones are not. Returns false
/// with the file and the reason in `error`, and leaves the parameters as they were.
bool readSettings(const QString& path, ProcessorInterface& processor, QString* error);

/// Replaces the file as writeWholeFile() does. Returns false with the file and the reason in `error`.
bool writeSettings(const QString& path, ProcessorInterface& processor, QString* error);
