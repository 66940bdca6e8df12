#pragma once

/// What --help prints; fits on one screen.
extern const char helpText[];
