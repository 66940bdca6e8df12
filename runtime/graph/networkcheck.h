#pragma once

#include "result.h"

#include "engine_generated.h"

namespace scribo::cpu {

/// Whether a network hangs together, so that everything behind may follow its indices, enumerations
/// and lists without looking again. Checked:
///  - every tensor has a known type, and a constant as many bytes as its extents say;
///  - exactly one input, N x C x H x width, and at least one output, all floats and named;
///  - every operation is of a known kind with known enumerations, has its attributes, as many inputs
///    and outputs as its kind takes, and reads only what stands before it (constants, the input, or
///    results of earlier operations);
///  - no tensor is computed twice;
///  - the range of widths is not empty.
/// `network` must have passed the FlatBuffers verifier.
Result<void> checkNetwork(const format::Network& network);

} // namespace scribo::cpu
