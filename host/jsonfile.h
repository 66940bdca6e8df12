#pragma once

#include <QJsonDocument>
#include <QString>

/// Reads a JSON file. Returns false with the reason in `error`, which starts with the file's path and, for a
/// mistake in the JSON, its line and column.
bool readJsonFile(const QString& path, QJsonDocument* document, QString* error);
