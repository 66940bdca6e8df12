#pragma once

#include <QStringList>

/// The names of the engine files in the folder "model" of the working directory, in descending order of their
/// texts, so that version v2 of a model comes before v1 (but v9 before v10). Empty when there is no such folder.
QStringList listModelFiles();
