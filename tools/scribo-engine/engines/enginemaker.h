#pragma once

#include "buildoptions.h"
#include "engine_generated.h"
#include "loadedengine.h"

#include <QStringList>

#include <cstdint>
#include <memory>
#include <vector>

namespace scribo::tool {

/// An engine file in memory, and what is in it.
struct MadeEngine
{
    std::vector<std::uint8_t> bytes;
    std::unique_ptr<format::NetworkT> network;
};

/// Makes an engine from an ONNX model and runs it once at each end of its widths, so that none is
/// made that the runtime would refuse. False, with a sentence for everything that stands in the way
/// in `problems`, when there is none.
bool makeEngine(const FileBytes& model, const builder::BuildOptions& options, MadeEngine* made, QStringList* problems);

} // namespace scribo::tool
