// Whatever bytes come in, the importer gives a network that makes a readable engine, or problems.

#include "build.h"
#include "enginefile.h"

#include <cstdlib>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    scribo::builder::Problems problems;
    const auto network = scribo::builder::buildNetwork(bytes, size, {{32, 40}, "fuzz"}, &problems);
    if (!network) {
        if (problems.empty()) {
            std::abort();
        }
        return 0;
    }
    const std::vector<std::uint8_t> engine = scribo::format::writeEngine(*network);
    constexpr std::size_t alignment = scribo::format::engineAlignment;
    const std::unique_ptr<void, void (*)(void*)> memory(
        std::aligned_alloc(alignment, (engine.size() / alignment + 1) * alignment), std::free);
    std::memcpy(memory.get(), engine.data(), engine.size());
    std::string error;
    if (!scribo::format::readEngine(memory.get(), engine.size(), &error)) {
        std::abort();
    }
    return 0;
}
