#include "enginemaker.h"

#include "build.h"
#include "enginerunner.h"
#include "format/enginefile.h"

namespace scribo::tool {

namespace {

/// Runs the engine at both ends of its widths.
Result<void> prove(const std::vector<std::uint8_t>& engine, const builder::WidthRange& widths)
{
    EngineRunner runner;
    if (Result<void> loaded = runner.load(engine.data(), engine.size()); !loaded) {
        return loaded;
    }
    for (int width : {widths.minimum, widths.maximum}) {
        if (const auto outputs = runner.run(width, testPicture(runner.pictureSize(width))); !outputs) {
            return failure("a trial run at width " + std::to_string(width) + " failed: " + outputs.error().message);
        }
    }
    return {};
}

} // namespace

Checked<MadeEngine> makeEngine(const FileBytes& model, const builder::BuildOptions& options)
{
    auto network = builder::buildNetwork(model.data(), model.size(), options);
    if (!network) {
        return faulty(std::move(network.error()));
    }
    MadeEngine made = {format::writeEngine(**network), std::move(*network)};
    if (made.bytes.empty()) {
        return faulty(Faults{"its constants are too large for an engine file"});
    }
    if (const Result<void> proved = prove(made.bytes, options.widths); !proved) {
        return faulty(proved.error());
    }
    return made;
}

} // namespace scribo::tool
