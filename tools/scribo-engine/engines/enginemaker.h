#pragma once

#include "buildoptions.h"
#include "engine_generated.h"
#include "faults.h"
#include "filebytes.h"

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

/// Makes an engine from an ONNX model and runs it once at each end of its widths, so that no engine is made that the
/// runtime would refuse. The faults are everything that stands in the way.
Checked<MadeEngine> makeEngine(const FileBytes& model, const builder::BuildOptions& options);

} // namespace scribo::tool
