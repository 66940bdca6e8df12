// Runs a fuzz target over a corpus without libFuzzer, so that the ordinary suite does it with any compiler:
// every file as it is, cut short and with bytes changed. The changes follow from the number of the file,
// which is printed before it is run.
//
//   replay_TARGET FILE-OR-FOLDER...

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

std::vector<fs::path> filesIn(const fs::path& path)
{
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const fs::path& path, unsigned number)
{
    std::printf("%u %s\n", number, path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const Bytes bytes((std::istreambuf_iterator<char>(file)), {});
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    if (bytes.empty()) {
        return;
    }
    constexpr int variants = 200;
    constexpr int mostChanges = 4;
    std::mt19937 random(number);
    std::uniform_int_distribution<std::size_t> anywhere(0, bytes.size() - 1);
    std::uniform_int_distribution<int> anyByte(0, 255);
    for (int variant = 0; variant < variants; ++variant) {
        Bytes changed = bytes;
        for (int change = 0; change <= variant % mostChanges; ++change) {
            changed[anywhere(random)] = static_cast<std::uint8_t>(anyByte(random));
        }
        LLVMFuzzerTestOneInput(changed.data(), changed.size());
        changed.resize(anywhere(random));
        LLVMFuzzerTestOneInput(changed.data(), changed.size());
    }
}

} // namespace

int main(int count, char** arguments)
{
    unsigned number = 0;
    for (int i = 1; i < count; ++i) {
        for (const fs::path& path : filesIn(arguments[i])) {
            replay(path, number++);
        }
    }
    if (number == 0) {
        std::fprintf(stderr, "usage: %s FILE-OR-FOLDER...; none was given, or they are empty\n", arguments[0]);
        return 2;
    }
    std::printf("%u files replayed\n", number);
    return 0;
}
