#pragma once

#include "rule.h"
#include "stridedcopy.h"

namespace scribo::cpu {

/// An operation that only moves values (Transpose, Concat, Gather, Slice, Expand, Split, Pad),
/// taken apart into copies (see OperationRow::movement). The shape arithmetic carries it out on integers, a plan on
/// floats.
struct Movement
{
    struct Part
    {
        std::size_t input;
        std::size_t output;
        StridedCopy copy;
    };

    /// The shape of each output.
    std::vector<Shape> results;
    std::vector<Part> parts = {};
    /// What elements hold that no part covers; nothing when the parts cover everything.
    std::optional<float> filler = std::nullopt;
};

} // namespace scribo::cpu
