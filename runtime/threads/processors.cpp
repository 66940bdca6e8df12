#include "processors.h"

#include <algorithm>
#include <cstdlib>

#ifdef __linux__
#include <pthread.h>
#include <sched.h>
#endif

namespace scribo::cpu {

namespace {

int allowedProcessors()
{
#ifdef __linux__
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof(allowed), &allowed) == 0) {
        return CPU_COUNT(&allowed);
    }
#endif
    return static_cast<int>(std::thread::hardware_concurrency());
}

/// The limit that the environment sets; the largest number where it sets none, or nothing that makes sense.
int wantedLimit()
{
    constexpr int none = 1 << 16;
    const char* const text = std::getenv("SCRIBO_THREADS");
    if (!text) {
        return none;
    }
    char* end = nullptr;
    const long count = std::strtol(text, &end, 10);
    return end != text && *end == '\0' && count >= 1 && count < none ? static_cast<int>(count) : none;
}

} // namespace

int usableProcessors()
{
    return std::max(1, std::min(allowedProcessors(), wantedLimit()));
}

#ifdef __linux__
int currentProcessor()
{
    return sched_getcpu();
}

void keepOff(std::thread& thread, int processor)
{
    cpu_set_t others;
    if (processor < 0 || processor >= CPU_SETSIZE || sched_getaffinity(0, sizeof(others), &others) != 0) {
        return;
    }
    CPU_CLR(static_cast<std::size_t>(processor), &others);
    if (CPU_COUNT(&others) > 0) {
        pthread_setaffinity_np(thread.native_handle(), sizeof(others), &others);
    }
}
#else
int currentProcessor()
{
    return -1;
}

void keepOff(std::thread&, int)
{
}
#endif

} // namespace scribo::cpu
