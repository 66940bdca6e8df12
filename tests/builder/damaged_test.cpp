// ONNX files that were cut short or changed: never more than faults, and never an engine that
// cannot be read.

#include "build.h"
#include "format/enginefile.h"
#include "graph/enginereader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

namespace {

std::string readModel(const std::string& name)
{
    std::ifstream file(std::string(VECTORS) + "/" + name + "/model.onnx", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Builds from `bytes`; what comes out is a readable engine or a list of faults.
void buildOrRefuse(const std::string& bytes)
{
    const auto network = scribo::builder::buildNetwork(bytes.data(), bytes.size(), {{32, 48}, "damaged"});
    if (!network) {
        ASSERT_FALSE(network.error().empty());
        return;
    }
    const std::vector<std::uint8_t> engine = scribo::format::writeEngine(**network);
    const std::size_t alignment = scribo::format::engineAlignment;
    const std::unique_ptr<void, void (*)(void*)> memory(
        std::aligned_alloc(alignment, (engine.size() / alignment + 1) * alignment), std::free);
    std::memcpy(memory.get(), engine.data(), engine.size());
    const auto read = scribo::cpu::readEngine(memory.get(), engine.size());
    EXPECT_TRUE(read) << read.error().message;
}

class Damaged : public testing::TestWithParam<const char*>
{
};

TEST_P(Damaged, CutShort)
{
    const std::string model = readModel(GetParam());
    ASSERT_FALSE(model.empty());
    const std::size_t step = std::max<std::size_t>(1, model.size() / 300);
    for (std::size_t length = 0; length < model.size(); length += step) {
        buildOrRefuse(model.substr(0, length));
    }
}

TEST_P(Damaged, Changed)
{
    const std::string model = readModel(GetParam());
    ASSERT_FALSE(model.empty());
    std::mt19937 random(1);
    for (int round = 0; round < 400; ++round) {
        std::string changed = model;
        for (int changes = 0; changes < 1 + round % 4; ++changes) {
            changed[random() % changed.size()] = static_cast<char>(random());
        }
        SCOPED_TRACE("round " + std::to_string(round));
        buildOrRefuse(changed);
    }
}

INSTANTIATE_TEST_SUITE_P(Models, Damaged,
    testing::Values("crnn_lstm_opset11", "crnn_gru_opset14", "attention", "slices_opset13", "gemm_opset13",
        "pads_opset11", "expands"),
    [](const auto& one) { return std::string(one.param); });

} // namespace
