#include "operationcase.h"

#include "graph/enginereader.h"
#include "plan/alignedbuffer.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

namespace scribo::test {
namespace {

using testing::HasSubstr;

/// A network with one of many things, small enough to damage it at every byte.
NetworkMaker tinyNetwork()
{
    NetworkMaker maker;
    const int picture = maker.input(1, 2, 2);
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.pads = {0, 0, 0, 0};
    convolution.dilations = {1, 1};
    convolution.activation = std::make_unique<format::ActivationT>();
    convolution.activation->kind = format::ActivationKind::Relu;
    const int features = maker.add(std::move(convolution),
        {picture, maker.floats({2, 2, 2, 1}, {1, 2, 3, 4, 5, 6, 7, 8}), maker.floats({2}, {1, -1})});
    const int list = maker.add(format::ReshapeT(), {features, maker.list({2, -1})});
    maker.output(maker.add(format::SoftmaxT(), {list}), "output");
    return maker;
}

/// What the runtime says of these bytes. Fails when it says anything but one error, or nothing with
/// an engine.
std::string outcome(const std::vector<std::uint8_t>& bytes)
{
    Session session(bytes);
    if (!session.isReady()) {
        return session.logger().takeError();
    }
    EXPECT_TRUE(session.logger().take().empty());
    return "";
}

/// Lets the engine run at a few widths, for the sake of what must not happen.
void exercise(const std::vector<std::uint8_t>& bytes)
{
    Session session(bytes);
    for (const int width : {1, 3, 8}) {
        if (session.isReady()) {
            nvinfer1::Dims dims = session.executionContext().getBindingDimensions(0);
            dims.d[3] = width;
            const bool small = dims.d[0] == 1 && dims.d[1] <= 8 && dims.d[2] <= 16;
            if (small) {
                session.run({{1, dims.d[1], dims.d[2], width},
                    std::vector<float>(static_cast<std::size_t>(dims.d[1] * dims.d[2] * width), 0.5F)});
            }
        }
    }
    for (const auto& [severity, message] : session.logger().take()) {
        EXPECT_EQ(severity, nvinfer1::ILogger::Severity::kERROR);
    }
}

TEST(EngineFile, ReadsWhatItWrote)
{
    NetworkMaker maker = tinyNetwork();
    maker.network.builder = "builder 1";
    maker.network.source = "model.onnx";
    const std::vector<std::uint8_t> bytes = maker.bytes(1, 7);
    const cpu::AlignedBuffer copy(bytes.size());
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    const Result<const format::Network*> network = cpu::readEngine(copy.data(), bytes.size());
    ASSERT_TRUE(network) << network.error().message;
    const std::unique_ptr<format::NetworkT> read((*network)->UnPack());
    EXPECT_EQ(read->builder, "builder 1");
    EXPECT_EQ(read->source, "model.onnx");
    EXPECT_EQ(read->maximum_width, 7);
    EXPECT_EQ(format::writeEngine(*read), bytes);
    EXPECT_EQ(std::memcmp(bytes.data() + 4, "SCRB", 4), 0);
}

TEST(EngineFile, MustBeAligned)
{
    const std::vector<std::uint8_t> bytes = tinyNetwork().bytes(1, 7);
    const cpu::AlignedBuffer copy(bytes.size() + 8);
    auto* const shifted = static_cast<std::uint8_t*>(copy.data()) + 8;
    std::memcpy(shifted, bytes.data(), bytes.size());
    const Result<const format::Network*> network = cpu::readEngine(shifted, bytes.size());
    ASSERT_FALSE(network);
    EXPECT_EQ(network.error().message, "the bytes of the engine do not start at a multiple of 64");
}

TEST(EngineFile, CutOffAnywhereIsRefused)
{
    std::vector<std::uint8_t> bytes = tinyNetwork().bytes(1, 7);
    ASSERT_EQ(outcome(bytes), "");
    while (!bytes.empty()) {
        bytes.pop_back();
        ASSERT_THAT(outcome(bytes), HasSubstr("engine")) << bytes.size() << " bytes left";
    }
}

TEST(EngineFile, LongerThanWrittenIsRefused)
{
    std::vector<std::uint8_t> bytes = tinyNetwork().bytes(1, 7);
    bytes.push_back(0);
    EXPECT_THAT(outcome(bytes), HasSubstr("checksum"));
}

TEST(EngineFile, ChangedInAnyByteIsRefused)
{
    const std::vector<std::uint8_t> intact = tinyNetwork().bytes(1, 7);
    for (std::size_t i = 0; i < intact.size(); ++i) {
        for (const int change : {0x01, 0x80, 0xFF}) {
            std::vector<std::uint8_t> bytes = intact;
            bytes[i] = static_cast<std::uint8_t>(bytes[i] ^ change);
            ASSERT_THAT(outcome(bytes), HasSubstr("engine file")) << "byte " << i << " changed by " << change;
        }
    }
}

/// Whether the container can still be given a new checksum.
bool isContainer(const std::vector<std::uint8_t>& bytes)
{
    const cpu::AlignedBuffer copy(bytes.size());
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    flatbuffers::Verifier verifier(static_cast<const std::uint8_t*>(copy.data()), bytes.size());
    return format::VerifyEngineBuffer(verifier) && format::GetEngine(copy.data())->checksum() != 0;
}

TEST(EngineFile, ChangedWithTheRightChecksumNeverHarms)
{
    const std::vector<std::uint8_t> intact = tinyNetwork().bytes(1, 7);
    for (std::size_t i = 0; i < intact.size(); ++i) {
        for (const int change : {0x01, 0x02, 0x10, 0x7F, 0x80, 0xFF}) {
            std::vector<std::uint8_t> bytes = intact;
            bytes[i] = static_cast<std::uint8_t>(bytes[i] ^ change);
            if (isContainer(bytes)) {
                format::sealEngine(bytes.data(), bytes.size());
                exercise(bytes);
            }
        }
    }
}

TEST(EngineFile, WhatTheFuzzerFoundNeverHarms)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(SCRIBO_ENGINE_CORPUS)) {
        SCOPED_TRACE(entry.path());
        std::ifstream file(entry.path(), std::ios::binary);
        std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
        ASSERT_TRUE(isContainer(bytes));
        format::sealEngine(bytes.data(), bytes.size());
        exercise(bytes);
        ++files;
    }
    EXPECT_GT(files, 4);
}

TEST(EngineFile, OfAnotherVersionIsNamed)
{
    std::vector<std::uint8_t> bytes = tinyNetwork().bytes(1, 7);
    auto* const engine = flatbuffers::GetMutableRoot<flatbuffers::Table>(bytes.data());
    ASSERT_TRUE(engine->SetField<std::uint32_t>(format::Engine::VT_FORMAT_VERSION, 2, 0));
    format::sealEngine(bytes.data(), bytes.size());
    EXPECT_EQ(
        outcome(bytes), "deserializeCudaEngine: the engine file has format version 2, this runtime reads version 1");
}

/// A network that is spoilt in one way, and what is said of it. (A list without entries is not
/// stored, so an absent list is what becomes of an empty one.)
struct Fault
{
    const char* name;
    std::function<void(format::NetworkT*)> spoil;
    const char* message;

    friend void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.name; }
};

class NetworkFaults : public testing::TestWithParam<Fault>
{
};

TEST_P(NetworkFaults, AreNamed)
{
    NetworkMaker maker = tinyNetwork();
    maker.network.minimum_width = 1;
    maker.network.maximum_width = 7;
    GetParam().spoil(&maker.network);
    EXPECT_EQ(outcome(format::writeEngine(maker.network)), std::string("deserializeCudaEngine: ") + GetParam().message);
}

format::ConvolutionT& convolutionOf(format::NetworkT* network)
{
    return *network->operations[0]->kind.AsConvolution();
}

const char* const attributes = "Convolution 'node0': its attributes are incomplete or out of range";
const char* const notAPicture
    = "the network's input is not a picture of batch x channels x height x any width in floats";

const Fault faults[] = {
    {"NoTensors", [](auto* n) { n->tensors.clear(); }, "the network has no tensors, operations, inputs or outputs"},
    {"NoWidths", [](auto* n) { n->minimum_width = 8; }, "the network's range of widths, 8 to 7, makes no sense"},
    {"ZeroWidth", [](auto* n) { n->minimum_width = 0; }, "the network's range of widths, 0 to 7, makes no sense"},
    {"HugeWidth", [](auto* n) { n->maximum_width = 65537; },
        "the network's range of widths, 1 to 65537, makes no sense"},
    {"NoInput", [](auto* n) { n->inputs.clear(); }, "the network has no tensors, operations, inputs or outputs"},
    {"TwoInputs",
        [](auto* n) {
            n->inputs = {0, 0};
        },
        "the network does not have exactly one input"},
    {"InputOutOfRange", [](auto* n) { n->inputs = {99}; }, "the network does not have exactly one input"},
    {"InputNegative", [](auto* n) { n->inputs = {-1}; }, "the network does not have exactly one input"},
    {"InputOfThreeDimensions",
        [](auto* n) {
            n->tensors[0]->dims = {2, 2, -1};
        },
        notAPicture},
    {"InputOfFixedWidth",
        [](auto* n) {
            n->tensors[0]->dims = {1, 2, 2, 5};
        },
        notAPicture},
    {"InputOfAnyHeight",
        [](auto* n) {
            n->tensors[0]->dims = {1, 2, -1, -1};
        },
        notAPicture},
    {"InputOfIntegers", [](auto* n) { n->tensors[0]->type = format::ElementType::Int64; }, notAPicture},
    {"NoOutput", [](auto* n) { n->outputs.clear(); }, "the network has no tensors, operations, inputs or outputs"},
    {"OutputTwice",
        [](auto* n) {
            n->outputs = {n->outputs[0], n->outputs[0]};
        },
        "tensor 6 'output' is bound twice"},
    {"InputAsOutput", [](auto* n) { n->outputs = {0}; }, "tensor 0 'input' is bound twice"},
    {"ConstantAsOutput", [](auto* n) { n->outputs = {1}; },
        "an output of the network is not a computed, named tensor of floats"},
    {"UnknownOutput", [](auto* n) { n->outputs = {7}; },
        "an output of the network is not a computed, named tensor of floats"},
    {"UnknownType", [](auto* n) { n->tensors[3]->type = static_cast<format::ElementType>(9); },
        "tensor 3 has an unknown type"},
    {"NineDimensions",
        [](auto* n) {
            n->tensors[1]->dims = {2, 2, 2, 1, 1, 1, 1, 1, 1};
        },
        "tensor 1 'constant' has more than 8 dimensions"},
    {"ShortConstant", [](auto* n) { n->tensors[1]->constant.pop_back(); },
        "tensor 1 'constant' has other data than its extents say"},
    {"NegativeConstant",
        [](auto* n) {
            n->tensors[1]->dims = {-2, -2, 2, 1};
        },
        "tensor 1 'constant' has other data than its extents say"},
    {"OverflowingConstant",
        [](auto* n) {
            n->tensors[1]->dims = {1LL << 31, 1LL << 31, 1LL << 31, 1LL << 31};
        },
        "tensor 1 'constant' has other data than its extents say"},
    {"NoKind", [](auto* n) { n->operations[0]->kind.Reset(); }, "operation 'node0': it is of an unknown kind"},
    {"OneStride", [](auto* n) { convolutionOf(n).strides = {1}; }, attributes},
    {"NoPads", [](auto* n) { convolutionOf(n).pads.clear(); }, attributes},
    {"ZeroStride",
        [](auto* n) {
            convolutionOf(n).strides = {1, 0};
        },
        attributes},
    {"NegativePad",
        [](auto* n) {
            convolutionOf(n).pads = {0, 0, -1, 0};
        },
        attributes},
    {"HugePad",
        [](auto* n) {
            convolutionOf(n).pads = {0, 0, 1 << 15, 0};
        },
        attributes},
    {"ZeroDilation",
        [](auto* n) {
            convolutionOf(n).dilations = {0, 1};
        },
        attributes},
    {"NoGroups", [](auto* n) { convolutionOf(n).groups = 0; }, attributes},
    {"UnknownActivation", [](auto* n) { convolutionOf(n).activation->kind = static_cast<format::ActivationKind>(77); },
        attributes},
    {"TooFewInputs", [](auto* n) { n->operations[0]->inputs.resize(1); }, "Convolution 'node0': it has 1 inputs"},
    {"TooManyInputs", [](auto* n) { n->operations[0]->inputs.resize(4); }, "Convolution 'node0': it has 4 inputs"},
    {"RequiredInputAbsent", [](auto* n) { n->operations[0]->inputs[0] = -1; },
        "Convolution 'node0': input 0 is not there when it runs"},
    {"InputBeforeItIsThere", [](auto* n) { n->operations[0]->inputs[0] = 5; },
        "Convolution 'node0': input 0 is not there when it runs"},
    {"WeightsNotConstant", [](auto* n) { n->operations[0]->inputs[1] = 0; },
        "Convolution 'node0': input 1 is not a constant"},
    {"NoOutputs", [](auto* n) { n->operations[0]->outputs.clear(); }, "Convolution 'node0': it has 0 outputs"},
    {"TwoOutputs",
        [](auto* n) {
            n->operations[0]->outputs = {3, 4};
        },
        "Convolution 'node0': it has 2 outputs"},
    {"OutputAbsent", [](auto* n) { n->operations[0]->outputs = {-1}; },
        "Convolution 'node0': an output does not exist or is computed already"},
    {"OutputOverConstant", [](auto* n) { n->operations[0]->outputs = {1}; },
        "Convolution 'node0': an output does not exist or is computed already"},
    {"WrongType", [](auto* n) { n->tensors[5]->type = format::ElementType::Int64; },
        "Reshape 'node1': its result is not of the type that the engine says"},
};

INSTANTIATE_TEST_SUITE_P(
    All, NetworkFaults, testing::ValuesIn(faults), [](const auto& test) { return test.param.name; });

} // namespace
} // namespace scribo::test
