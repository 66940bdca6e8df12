#pragma once

#include "result.h"

#include <QJsonDocument>
#include <QString>

/// Reads a JSON file. The error starts with the file's path and, for a mistake in the JSON, its line and column.
scribo::Result<QJsonDocument> readJsonFile(const QString& path);
