#include "randomarrays.h"

#include <cstdlib>
#include <iostream>

namespace scribo::test {

unsigned runSeed()
{
    static const unsigned seed = [] {
        const char* given = std::getenv("SCRIBO_SEED");
        const unsigned chosen
            = given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device()();
        std::cout << "random cases with SCRIBO_SEED=" << chosen << std::endl;
        return chosen;
    }();
    return seed;
}

std::vector<float> randomFloats(std::mt19937& random, std::int64_t count, float spread)
{
    std::normal_distribution<float> normal(0.0F, spread);
    std::vector<float> numbers(static_cast<std::size_t>(count));
    for (float& number : numbers) {
        number = normal(random);
    }
    return numbers;
}

} // namespace scribo::test
