#pragma once

#include "arguments.h"
#include "buildoptions.h"

#include <optional>

namespace scribo::tool {

/// What --help says of the options that tell how a model was trained.
extern const char* const modelOptionsHelp;

/// Adds the options that the commands which make engines have in common.
void addModelOptions(Arguments* command);

/// Reads them; the file that the command works on is the source. Nothing, with what is wrong told to
/// the streams, when they make no sense.
std::optional<builder::BuildOptions> readModelOptions(const Arguments& command, Streams streams);

/// Whether the option that tells the layout of the scores is given.
bool isLayoutGiven(const Arguments& command);

} // namespace scribo::tool
