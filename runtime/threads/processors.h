#pragma once

#include <thread>

namespace scribo::cpu {

/// Threads that the runtime may keep busy at once in this process: the processors that the calling thread may run on,
/// or fewer where the environment variable SCRIBO_THREADS says so. At least 1.
int usableProcessors();

/// The processor that the calling thread is on; -1 where that cannot be told.
int currentProcessor();

/// Has `thread` run on those processors that the calling thread may use, without `processor`; leaves it as it is when
/// there are no others. A scheduler that knows of no cache that two processors share, as in many virtual machines,
/// wakes a thread on the processor of its waker, and moves it elsewhere at the next tick only, milliseconds later.
void keepOff(std::thread& thread, int processor);

} // namespace scribo::cpu
