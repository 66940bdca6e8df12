#pragma once

#include "format/enginefile.h"

#include <QString>

#include <cstdlib>
#include <memory>

namespace scribo::tool {

/// A file in memory, aligned as an engine must be.
class FileBytes
{
public:
    /// False, with a sentence in `error`, when the file cannot be read.
    bool read(const QString& path, QString* error);

    const void* data() const { return bytes.get(); }
    std::size_t size() const { return length; }

private:
    struct Free
    {
        void operator()(void* memory) const { std::free(memory); }
    };
    std::unique_ptr<void, Free> bytes;
    std::size_t length = 0;
};

/// An engine file, read and verified.
class LoadedEngine
{
public:
    /// False, with a sentence in `error`, when there is no such file or it is not an engine.
    bool read(const QString& path, QString* error);

    const FileBytes& file() const { return bytes; }
    /// Points into the file.
    const format::Network& network() const { return *root; }

private:
    FileBytes bytes;
    const format::Network* root = nullptr;
};

} // namespace scribo::tool
