#include "processor.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace scribo::cpu {

namespace {

InstructionSet highestOfProcessor()
{
#if SCRIBO_X86
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl")
        && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
    if (avx2) {
        return avx512 ? InstructionSet::Avx512 : InstructionSet::Avx2;
    }
#endif
    return InstructionSet::Base;
}

} // namespace

InstructionSet allowedInstructionSet(const char* text)
{
    if (text && std::strcmp(text, "base") == 0) {
        return InstructionSet::Base;
    }
    if (text && std::strcmp(text, "avx2") == 0) {
        return InstructionSet::Avx2;
    }
    return InstructionSet::Avx512;
}

InstructionSet allowedInstructionSet()
{
    static const InstructionSet allowed = allowedInstructionSet(std::getenv("SCRIBO_ISA"));
    return allowed;
}

InstructionSet usedInstructionSet()
{
    static const InstructionSet used = std::min(highestOfProcessor(), allowedInstructionSet());
    return used;
}

int widestLanes()
{
    return usedInstructionSet() >= InstructionSet::Avx512 ? 16 : 8;
}

} // namespace scribo::cpu
