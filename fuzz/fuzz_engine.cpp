// The engine reader, the planner and a run, on whatever bytes there are.
//
// An input is an engine file. Its checksum is put right first where that can be done, because
// everything behind the checksum is what is worth searching.

#include "NvInfer.h"

#include "format/enginefile.h"
#include "format/network.h"
#include "graph/enginereader.h"
#include "graph/shapes.h"
#include "plan/alignedbuffer.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using namespace scribo;

/// Ends the process on anything but errors, the way an application does that maps internal errors
/// to fatal ones.
class StrictLogger : public nvinfer1::ILogger
{
public:
    void log(Severity severity, const char* message) noexcept override
    {
        if (severity != Severity::kERROR || !message || !*message) {
            std::abort();
        }
        ++errors;
    }

    int errors = 0;
};

/// Gives the container the checksum that belongs to its bytes, if it is one.
void repair(std::uint8_t* bytes, std::size_t size)
{
    flatbuffers::Verifier verifier(bytes, size);
    if (size >= 8 && format::EngineBufferHasIdentifier(bytes) && format::VerifyEngineBuffer(verifier)
        && format::GetEngine(bytes)->checksum() != 0) {
        format::sealEngine(bytes, size);
    }
}

/// Whether a run at `width` stays small: an engine may ask for as much work as it likes, and an
/// application that trusts it with that would wait; here it would only slow the search down.
bool isSmall(const format::Network& network, int width)
{
    constexpr std::int64_t mostElements = 1 << 16;
    constexpr std::int64_t mostProducts = 1 << 26;
    const Result<std::vector<cpu::Shape>> known = cpu::inferShapes(network, width);
    if (!known) {
        return true;
    }
    const std::vector<cpu::Shape>& shapes = *known;
    std::int64_t elements = 0;
    std::int64_t constants = 0;
    for (flatbuffers::uoffset_t i = 0; i < network.tensors()->size(); ++i) {
        const std::int64_t count = cpu::countElements(shapes[i]);
        (format::isConstant(*network.tensors()->Get(i)) ? constants : elements) += count;
        if (count > mostElements) {
            return false;
        }
    }
    for (const format::Operation* operation : *network.operations()) {
        if (const auto* pooling = operation->kind_as_Pooling()) {
            constants += std::int64_t(pooling->kernel()->Get(0)) * pooling->kernel()->Get(1);
        } else if (operation->kind_type() == format::OperationKind::MatrixProduct) {
            constants += shapes[static_cast<std::size_t>(operation->inputs()->Get(0))].back();
        }
    }
    return elements <= mostElements && constants <= mostElements && elements * (constants + 1) <= mostProducts;
}

bool isSmall(const std::uint8_t* bytes, std::size_t size, int width)
{
    const Result<const format::Network*> network = cpu::readEngine(bytes, size);
    return !network || isSmall(**network, width);
}

std::int64_t byteCount(const nvinfer1::Dims& dims)
{
    std::int64_t count = sizeof(float);
    for (int i = 0; i < dims.nbDims; ++i) {
        count *= dims.d[i];
    }
    return count;
}

/// Buffers of a size that isSmall() lets through, made once: device memory is never given back.
void* buffer(std::size_t slot)
{
    static std::vector<void*> buffers;
    while (buffers.size() <= slot) {
        void* made = nullptr;
        if (cudaMalloc(&made, std::size_t(1) << 19) != cudaSuccess) {
            std::abort();
        }
        std::memset(made, 0, std::size_t(1) << 19);
        buffers.push_back(made);
    }
    return buffers[slot];
}

void runAt(nvinfer1::ICudaEngine& engine, nvinfer1::IExecutionContext& context, int width)
{
    nvinfer1::Dims dims = context.getBindingDimensions(0);
    dims.d[3] = width;
    if (!context.setBindingDimensions(0, dims)) {
        return;
    }
    std::vector<void*> buffers;
    for (int i = 0; i < engine.getNbBindings() && i < 64; ++i) {
        if (byteCount(context.getBindingDimensions(i)) > (std::int64_t(1) << 19)) {
            std::abort();
        }
        buffers.push_back(buffer(static_cast<std::size_t>(i)));
    }
    if (engine.getNbBindings() <= 64) {
        context.enqueueV2(buffers.data(), nullptr, nullptr);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const cpu::AlignedBuffer copy(size);
    auto* bytes = static_cast<std::uint8_t*>(copy.data());
    if (size > 0) {
        std::memcpy(bytes, data, size);
    }
    repair(bytes, size);

    StrictLogger logger;
    const std::unique_ptr<nvinfer1::IRuntime> runtime(nvinfer1::createInferRuntime(logger));
    const std::unique_ptr<nvinfer1::ICudaEngine> engine(runtime->deserializeCudaEngine(bytes, size));
    if (logger.errors != (engine ? 0 : 1)) {
        std::abort();
    }
    if (!engine) {
        return 0;
    }
    const std::unique_ptr<nvinfer1::IExecutionContext> context(engine->createExecutionContext());
    for (const int width : {8, 9, 33}) {
        if (isSmall(bytes, size, width)) {
            runAt(*engine, *context, width);
        }
    }
    return 0;
}
