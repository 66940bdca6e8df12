#pragma once

#include "vector.h"

#include <algorithm>
#include <iterator>

/// Chooses among the forms of a kernel. A kernel is a type with a static, always-inline function template run<Vector>
/// in portable vectors. It is compiled once for each row of the list below; the processor at hand decides which one is
/// called. Another instruction set needs a line in processor.h, and a function and a row here.
namespace scribo::cpu {

template <class Kernel, class Function>
class KernelForms;

template <class Kernel, class Result, class... Arguments>
class KernelForms<Kernel, Result (*)(Arguments...)>
{
public:
    using Function = Result (*)(Arguments...);

    /// The fastest form with vectors of `lanes` floats, 8 or 16.
    static Function fastest(int lanes)
    {
        return std::find_if(std::begin(forms), std::end(forms) - 1, [lanes](const Form& form) {
            return form.lanes == lanes && form.needed <= usedInstructionSet();
        })->function;
    }

private:
    struct Form
    {
        InstructionSet needed;
        int lanes;
        Function function;
    };

    template <class Vector>
    static Result base(Arguments... arguments)
    {
        return Kernel::template run<Vector>(arguments...);
    }

#if SCRIBO_X86
    template <class Vector>
    SCRIBO_AVX2 static Result avx2(Arguments... arguments)
    {
        return Kernel::template run<Vector>(arguments...);
    }

    template <class Vector>
    SCRIBO_AVX512 static Result avx512(Arguments... arguments)
    {
        return Kernel::template run<Vector>(arguments...);
    }
#endif

    /// The fastest first.
    static constexpr Form forms[] = {
#if SCRIBO_X86
        {InstructionSet::Avx512, 16, avx512<Float16>},
        {InstructionSet::Avx2, 8, avx2<Float8>},
#endif
        {InstructionSet::Base, 16, base<Float16>},
        {InstructionSet::Base, 8, base<Float8>},
    };
};

/// The fastest form of `Kernel` with vectors of `lanes` floats on this processor, as a pointer to `Function`.
template <class Kernel, class Function>
Function fastestForm(int lanes)
{
    return KernelForms<Kernel, Function>::fastest(lanes);
}

} // namespace scribo::cpu
