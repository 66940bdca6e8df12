#pragma once

#include <QString>
#include <QStringList>

/// The names of the engine files that are listed, with the wildcards of a shell.
constexpr char modelNamePattern[] = "ocr_*_p*_*_*.*";

/// Whether a file of this name in the model folder is listed. Capital and small letters count as equal.
bool isListedModelFile(const QString& fileName);

/// The names of the engine files in the folder "model" of the working directory, in descending order of their
/// texts, so that version v2 of a model comes before v1 (but v9 before v10). Empty when there is no such folder.
QStringList listModelFiles();
