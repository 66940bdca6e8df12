#pragma once

namespace scribo::host {

/// The processor's parameters that a host works with itself, by their number from 1 in the parameter list.
/// Settings are persisted by position, so these numbers never change.
namespace ParameterNumber {

constexpr int model = 2;
constexpr int enable = 3;
constexpr int save = 4;
constexpr int okLimit = 5;
constexpr int ngLimit = 6;
constexpr int compare = 9;
constexpr int reference = 10;
constexpr int count = 13;

} // namespace ParameterNumber

} // namespace scribo::host
