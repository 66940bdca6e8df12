#pragma once

#include "processorinterface.h"
#include "result.h"

#include <QString>

namespace scribo::host {

/// The settings of a processor in a JSON file; settings.h says what they look like.

/// Applies the settings of a file. The error starts with the file; the parameters are then as they were.
Result<void> readSettings(const QString& path, ProcessorInterface& processor);

/// Replaces the file as a whole or not at all. The error starts with the file.
Result<void> writeSettings(const QString& path, ProcessorInterface& processor);

} // namespace scribo::host
