#include "loadedengine.h"

#include "graph/enginereader.h"

namespace scribo::tool {

Result<LoadedEngine> LoadedEngine::read(const QString& path)
{
    Result<FileBytes> bytes = FileBytes::read(path);
    if (!bytes) {
        return tl::unexpected<Error>(bytes.error());
    }
    LoadedEngine engine;
    engine.bytes = std::move(*bytes);
    const Result<const format::Network*> network = cpu::readEngine(engine.bytes.data(), engine.bytes.size());
    if (!network) {
        return tl::unexpected<Error>(network.error());
    }
    engine.root = *network;
    return engine;
}

} // namespace scribo::tool
