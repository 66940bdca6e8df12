#pragma once

#include "result.h"

#include "engine_generated.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The container around a network: identifier, version, checksum. Everything that decides whether
/// bytes from outside are a network is here.
namespace scribo::format {

constexpr std::uint32_t engineFormatVersion = 1;

/// Where constants and the payload start, as the schema's force_align says; bytes given to
/// openEngine() must start at a multiple of it.
constexpr std::size_t engineAlignment = 64;

/// The bytes of an engine file that holds `network`; empty when its constants are too large for one
/// (about two gigabytes). What is wrong with the network itself is for cpu::readEngine() to say.
std::vector<std::uint8_t> writeEngine(const NetworkT& network);

/// Puts the right checksum into the `size` bytes of an engine file that were changed in place. They
/// must still be a container whose structure is intact.
void sealEngine(std::uint8_t* bytes, std::size_t size);

/// Looks at `size` bytes from outside and returns the network inside, which points into `bytes` (so `bytes` must be
/// 64-byte aligned and outlive it). Verified: identifier, format version, checksum, and the FlatBuffers structure; not
/// the network itself, for which there is cpu::readEngine().
Result<const Network*> openEngine(const void* bytes, std::size_t size);

/// Whether the data of all constants start at a multiple of engineAlignment.
bool constantsAligned(const Network& network);

} // namespace scribo::format
