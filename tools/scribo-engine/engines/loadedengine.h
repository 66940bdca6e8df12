#pragma once

#include "filebytes.h"

#include "engine_generated.h"

#include <QString>

namespace scribo::tool {

/// An engine file, read and verified.
class LoadedEngine
{
public:
    /// The error is the reason why there is no engine in the file, without its path.
    static Result<LoadedEngine> read(const QString& path);

    const FileBytes& file() const { return bytes; }
    /// Points into the file.
    const format::Network& network() const { return *root; }

private:
    FileBytes bytes;
    const format::Network* root = nullptr;
};

} // namespace scribo::tool
