#pragma once

#include "windows.h"

namespace scribo::cpu {

/// Maximum pooling of channels in blocks (channels / block x rows x columns x block). Every window meets the source.
struct MaxPoolingShape
{
    int block; ///< channels in a block: 8 or 16
    std::int64_t blocks;
    WindowAxis down, across;
};

/// Works on one block of channels, the `index`-th; the addresses are where the whole begins. A window that holds a
/// not-a-number may or may not give one.
using MaxPooling = void (*)(const MaxPoolingShape& shape, std::int64_t index, const float* source, float* result);

/// The fastest for blocks of `block` channels on this processor.
MaxPooling maxPooling(int block);

} // namespace scribo::cpu
