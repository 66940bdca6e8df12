#pragma once

namespace scribo::host {

/// What --help prints. It fits on one screen.
extern const char helpText[];

} // namespace scribo::host
