#pragma once

/// Which processors a kernel is compiled for. The library as a whole is compiled for the base architecture; a kernel
/// that gains by more is an always-inline template in portable vectors, compiled once more in a function marked
/// SCRIBO_AVX2 or SCRIBO_AVX512, and the processor at hand decides which is called.

#define SCRIBO_INLINE [[gnu::always_inline]] inline

#if defined(__x86_64__)
#define SCRIBO_X86 1
#define SCRIBO_AVX2 [[gnu::target("avx2,fma")]]
#define SCRIBO_AVX512 [[gnu::target("avx512f,avx512vl,avx512dq,avx512bw,fma")]]

namespace scribo::cpu {

inline bool hasAvx2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

inline bool hasAvx512()
{
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq")
        && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("fma");
}

} // namespace scribo::cpu
#else
#define SCRIBO_X86 0
#endif
