#pragma once

#include "engine_generated.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The container around a network: identifier, version, checksum. Everything that decides whether
/// bytes from outside may be believed is here.
namespace scribo::format {

constexpr uint32_t engineFormatVersion = 1;

/// The bytes of an engine file that holds `network`.
std::vector<uint8_t> writeEngine(const NetworkT& network);

/// Looks at `size` bytes from outside. Returns the network inside, which points into `bytes` (so
/// `bytes` must be 64-byte aligned and outlive it), or null with a sentence in `error`.
/// Verified: identifier, format version, checksum, the FlatBuffers structure, and that every
/// tensor index of an operation exists. Shapes are the planner's business.
const Network* readEngine(const void* bytes, std::size_t size, std::string* error);

} // namespace scribo::format
