#pragma once

#include "result.h"

#include <QJsonDocument>
#include <QString>

namespace scribo::host {

/// Reads a JSON file. The error starts with the file's path and, for a mistake in the JSON, its line and column.
Result<QJsonDocument> readJsonFile(const QString& path);

} // namespace scribo::host
