#pragma once

#include "arguments.h"
#include "buildoptions.h"

namespace scribo::tool {

/// What --help says of the options that tell how a model was trained.
extern const char* const modelOptionsHelp;

/// Adds the options that the commands which make engines have in common.
void addModelOptions(Arguments* command);

/// Reads them; the file that the command works on is the source. The error says which one makes no sense.
Result<builder::BuildOptions> readModelOptions(const Arguments& command);

/// Whether the option that tells the layout of the scores is given.
bool isLayoutGiven(const Arguments& command);

} // namespace scribo::tool
