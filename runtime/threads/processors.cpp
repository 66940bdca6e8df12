#include "processors.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

#ifdef __linux__
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

} // namespace scribo::cpu
