#pragma once

#include <QByteArray>
#include <QString>

/// Writes a file as a whole or not at all, in place of an earlier one. Only a file is replaced: no device,
/// pipe or folder. Returns false with the file and the reason in `error`.
bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error);
