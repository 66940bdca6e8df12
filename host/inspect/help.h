#pragma once

namespace scribo::host {

/// What --help prints; fits on one screen.
extern const char helpText[];

} // namespace scribo::host
