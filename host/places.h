#pragma once

#include "result.h"

#include <QString>

namespace scribo::host {

/// The processor plug-in to load: `given` if it is not empty, else the file that the environment variable
/// SCRIBO_PLUGIN names, else the one that was built or installed together with the program in
/// `programFolder`. Returns an absolute path. The file need not exist. Relative paths start at the current
/// directory.
QString findPlugin(const QString& given, const QString& programFolder);

/// The folder to work in, whose folder "model" holds the models: `given` if it is not empty, else the
/// current directory if it has such a folder, else the one that was built or installed together with the
/// program. An error when there is none.
Result<QString> findWorkFolder(const QString& given, const QString& programFolder);

} // namespace scribo::host
