#pragma once

/// Which processors a kernel is compiled for. The library as a whole is compiled for the base architecture; a kernel
/// that gains by more is compiled once for each instruction set that is listed here (see dispatch.h).

#define SCRIBO_INLINE [[gnu::always_inline]] inline

#if defined(__x86_64__)
#define SCRIBO_X86 1
#define SCRIBO_AVX2 [[gnu::target("avx2,fma")]]
#define SCRIBO_AVX512 [[gnu::target("avx512f,avx512vl,avx512dq,avx512bw,fma")]]
#else
#define SCRIBO_X86 0
#endif

namespace scribo::cpu {

/// Each holds those before it.
enum class InstructionSet { Base, Avx2, Avx512 };

/// The highest instruction set that `text` allows: "base", "avx2" or "avx512"; all of them for any other text and for
/// null.
InstructionSet allowedInstructionSet(const char* text);
/// What the environment variable SCRIBO_ISA allows. It is read once, at the first call.
InstructionSet allowedInstructionSet();

/// The highest instruction set of this processor that is allowed.
InstructionSet usedInstructionSet();

/// The lanes of the widest vectors that kernels should use, 8 or 16.
int widestLanes();

} // namespace scribo::cpu
