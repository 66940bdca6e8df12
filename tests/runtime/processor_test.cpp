#include "kernels/processor.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace scribo::test {
namespace {

using cpu::InstructionSet;

TEST(InstructionSets, AreLimitedByTheirNames)
{
    EXPECT_EQ(cpu::allowedInstructionSet("base"), InstructionSet::Base);
    EXPECT_EQ(cpu::allowedInstructionSet("avx2"), InstructionSet::Avx2);
    EXPECT_EQ(cpu::allowedInstructionSet("avx512"), InstructionSet::Avx512);
}

TEST(InstructionSets, AreNotLimitedByOtherTexts)
{
    for (const char* text : {"", "AVX2", "avx", "avx2 ", "sse41", "0"}) {
        EXPECT_EQ(cpu::allowedInstructionSet(text), InstructionSet::Avx512) << text;
    }
    EXPECT_EQ(cpu::allowedInstructionSet(nullptr), InstructionSet::Avx512);
}

TEST(InstructionSets, UsedAreAmongThoseThatTheEnvironmentAllows)
{
    EXPECT_EQ(cpu::allowedInstructionSet(), cpu::allowedInstructionSet(std::getenv("SCRIBO_ISA")));
    EXPECT_LE(cpu::usedInstructionSet(), cpu::allowedInstructionSet());
    EXPECT_EQ(cpu::widestLanes(), cpu::usedInstructionSet() == InstructionSet::Avx512 ? 16 : 8);
}

} // namespace
} // namespace scribo::test
