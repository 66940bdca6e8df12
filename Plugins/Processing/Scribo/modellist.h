#pragma once

#include <QStringList>

/// The names of the engine files in the folder "model" of the working directory, in descending order, so
/// that a newer version of a model comes first. Empty when there is no such folder.
QStringList listModelFiles();
