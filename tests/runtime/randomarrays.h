#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace scribo::test {

/// The seed of this run's random cases: SCRIBO_SEED when it is set, so that a failure can be
/// repeated, else a new one. Printed on first use.
unsigned runSeed();

/// `count` numbers around zero with the given spread.
std::vector<float> randomFloats(std::mt19937& random, std::int64_t count, float spread = 1.0F);

/// A whole number from `low` to `high`, both included.
inline std::int64_t pick(std::mt19937& random, std::int64_t low, std::int64_t high)
{
    return std::uniform_int_distribution<std::int64_t>(low, high)(random);
}

inline bool toss(std::mt19937& random)
{
    return pick(random, 0, 1) == 1;
}

} // namespace scribo::test
