#include "loadedengine.h"

#include "format/enginefile.h"

namespace scribo::tool {

Result<LoadedEngine> LoadedEngine::read(const QString& path)
{
    Result<FileBytes> bytes = FileBytes::read(path);
    if (!bytes) {
        return tl::unexpected<Error>(bytes.error());
    }
    std::string reason;
    LoadedEngine engine;
    engine.bytes = std::move(*bytes);
    engine.root = format::readEngine(engine.bytes.data(), engine.bytes.size(), &reason);
    if (!engine.root) {
        return failure(reason);
    }
    return engine;
}

} // namespace scribo::tool
