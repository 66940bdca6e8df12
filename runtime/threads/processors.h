#pragma once

namespace scribo::cpu {

/// Threads that the runtime may keep busy at once in this process: the processors that the calling thread may run on,
/// or fewer where the environment variable SCRIBO_THREADS says so. At least 1.
int usableProcessors();

} // namespace scribo::cpu
