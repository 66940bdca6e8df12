// Whatever bytes come in, the importer gives a network that makes a readable engine, or faults.

#include "build.h"
#include "format/enginefile.h"
#include "graph/enginereader.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using namespace scribo::builder;

/// Plain options, or every adaptation at once; which one follows from the size, so that a search finds
/// both for the same model.
BuildOptions optionsFor(std::size_t size)
{
    BuildOptions options = {{32, 40}, "fuzz"};
    if (size % 3 == 1) {
        options.picture = {8, Channels::Bgr, {{0, 1}}};
        options.scores = {"ntk", true, true};
    } else if (size % 3 == 2) {
        options.picture = {0, Channels::Grey, {{1, -1}}};
        options.scores = {"nkt", false, false};
    }
    return options;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto network = buildNetwork(bytes, size, optionsFor(size));
    if (!network) {
        if (network.error().empty()) {
            std::abort();
        }
        return 0;
    }
    const std::vector<std::uint8_t> engine = scribo::format::writeEngine(**network);
    constexpr std::size_t alignment = scribo::format::engineAlignment;
    const std::unique_ptr<void, void (*)(void*)> memory(
        std::aligned_alloc(alignment, (engine.size() / alignment + 1) * alignment), std::free);
    std::memcpy(memory.get(), engine.data(), engine.size());
    if (!scribo::cpu::readEngine(memory.get(), engine.size())) {
        std::abort();
    }
    return 0;
}
