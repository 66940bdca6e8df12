#include "enginefile.h"

#include <zlib.h>

#include <algorithm>

namespace scribo::format {

namespace {

/// Room for everything but constants in a buffer whose positions are 31-bit numbers.
constexpr std::size_t maximumConstantBytes = (std::size_t(1) << 31) - (std::size_t(1) << 26);

/// Where the container stores its checksum; null when it does not.
const std::uint8_t* checksumField(const void* bytes)
{
    return flatbuffers::GetRoot<flatbuffers::Table>(bytes)->GetAddressOf(Engine::VT_CHECKSUM);
}

/// Over everything but the checksum itself, so that not even a byte of padding can change unseen.
std::uint32_t checksumWithout(const void* field, const void* bytes, std::size_t size)
{
    const auto* begin = static_cast<const std::uint8_t*>(bytes);
    const auto* hole = static_cast<const std::uint8_t*>(field);
    const auto* rest = hole + sizeof(std::uint32_t);
    const uLong head = crc32_z(crc32_z(0, nullptr, 0), begin, static_cast<std::size_t>(hole - begin));
    return static_cast<std::uint32_t>(crc32_z(head, rest, static_cast<std::size_t>(begin + size - rest)));
}

bool isAligned(const void* bytes)
{
    return reinterpret_cast<std::uintptr_t>(bytes) % engineAlignment == 0;
}

std::size_t constantBytes(const NetworkT& network)
{
    std::size_t total = 0;
    for (const auto& tensor : network.tensors) {
        total += tensor->constant.size();
    }
    return total;
}

/// The container, once its identifier, structure, version and checksum are believed.
Result<const Engine*> openContainer(const void* bytes, std::size_t size)
{
    // Below this size there is not even room for an identifier.
    constexpr std::size_t smallest = sizeof(flatbuffers::uoffset_t) + flatbuffers::kFileIdentifierLength;
    if (!bytes || size < smallest || !EngineBufferHasIdentifier(bytes)) {
        return failure("it is not an engine file of the CPU runtime");
    }
    if (size >= FLATBUFFERS_MAX_BUFFER_SIZE) {
        return failure("the engine file is too large");
    }
    if (!isAligned(bytes)) {
        return failure("the bytes of the engine do not start at a multiple of " + std::to_string(engineAlignment));
    }
    flatbuffers::Verifier verifier(static_cast<const std::uint8_t*>(bytes), size);
    if (!VerifyEngineBuffer(verifier)) {
        return failure("the engine file is damaged or cut off");
    }
    const Engine* engine = GetEngine(bytes);
    if (engine->format_version() != engineFormatVersion) {
        return failure("the engine file has format version " + std::to_string(engine->format_version())
            + ", this runtime reads version " + std::to_string(engineFormatVersion));
    }
    const std::uint8_t* field = checksumField(bytes);
    if (!engine->payload() || !field || checksumWithout(field, bytes, size) != engine->checksum()) {
        return failure("the checksum of the engine file is wrong: it is damaged or cut off");
    }
    return engine;
}

} // namespace

std::vector<std::uint8_t> writeEngine(const NetworkT& network)
{
    if (constantBytes(network) > maximumConstantBytes) {
        return {};
    }
    flatbuffers::FlatBufferBuilder inner;
    inner.Finish(Network::Pack(inner, &network));

    flatbuffers::FlatBufferBuilder outer(inner.GetSize() + 1024);
    outer.ForceVectorAlignment(inner.GetSize(), sizeof(std::uint8_t), engineAlignment);
    const auto payload = outer.CreateVector(inner.GetBufferPointer(), inner.GetSize());
    // Not its default: a field that holds its default is not stored, and this one is filled in below.
    constexpr std::uint32_t placeholder = 1;
    FinishEngineBuffer(outer, CreateEngine(outer, engineFormatVersion, placeholder, payload));

    std::vector<std::uint8_t> bytes(outer.GetBufferPointer(), outer.GetBufferPointer() + outer.GetSize());
    sealEngine(bytes.data(), bytes.size());
    return bytes;
}

void sealEngine(std::uint8_t* bytes, std::size_t size)
{
    const std::uint8_t* field = checksumField(bytes);
    flatbuffers::WriteScalar(bytes + (field - bytes), checksumWithout(field, bytes, size));
}

Result<const Network*> openEngine(const void* bytes, std::size_t size)
{
    return openContainer(bytes, size).and_then([](const Engine* engine) -> Result<const Network*> {
        const std::uint8_t* payload = engine->payload()->data();
        flatbuffers::Verifier verifier(payload, engine->payload()->size());
        if (!isAligned(payload) || !verifier.VerifyBuffer<Network>()) {
            return failure("the network in the engine file is malformed");
        }
        return flatbuffers::GetRoot<Network>(payload);
    });
}

bool constantsAligned(const Network& network)
{
    return std::all_of(network.tensors()->begin(), network.tensors()->end(),
        [](const Tensor* tensor) { return !tensor->constant() || isAligned(tensor->constant()->data()); });
}

} // namespace scribo::format
