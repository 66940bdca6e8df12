#pragma once

#include "result.h"

#include <QString>

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace scribo::tool {

/// A file in memory, aligned as an engine must be.
class FileBytes
{
public:
    /// The error is the reason why the file cannot be read, without its path.
    static Result<FileBytes> read(const QString& path);

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

} // namespace scribo::tool
