#pragma once

#include <cstdint>
#include <vector>

/// Winograd's minimal filtering F(4x4, 3x3): a convolution of 3x3 with stride 1 makes 4x4 results out of 6x6 values
/// with 36 multiplications in the place of 144. Lavin and Gray, "Fast algorithms for convolutional neural networks",
/// 2016, whose names of the matrices are used here.
///
/// Source and result lie in blocks of channels (channels / block x rows x columns x block, channels padded with zeros
/// to whole blocks). In between stand two stacks of 36 layers, one for each place in a tile of 6x6, each of
/// channels / block x tiles x block: a product of matrices for each layer turns the first into the second.
namespace scribo::cpu {

struct WinogradShape
{
    static constexpr std::int64_t tile = 6; ///< values along a tile
    static constexpr std::int64_t step = 4; ///< results along a tile
    static constexpr std::int64_t layers = tile * tile;

    int block; ///< channels in a block: 8 or 16
    std::int64_t channels; ///< whole blocks
    std::int64_t filters; ///< whole blocks
    std::int64_t rows, columns; ///< of the source
    std::int64_t resultRows, resultColumns;
    std::int64_t padTop, padLeft;

    std::int64_t tilesDown() const { return (resultRows + step - 1) / step; }
    std::int64_t tilesAcross() const { return (resultColumns + step - 1) / step; }
    std::int64_t tiles() const { return tilesDown() * tilesAcross(); }
};

/// G g G' of every filter g: layers x filters x channels of `shape`, zero in the padding. `weights` holds `filters` x
/// `channels` x 3 x 3 floats.
std::vector<float> winogradWeights(
    const WinogradShape& shape, const float* weights, std::int64_t filters, std::int64_t channels);

// Both transforms work on one block of channels, the `index`-th; the addresses are where the whole begins.

/// B' d B of every tile d of the source; outside the source lie zeros.
using WinogradSpread = void (*)(const WinogradShape& shape, std::int64_t index, const float* source, float* layers);
/// A' m A of every tile m of the second stack, plus `bias` (`filters` floats); below 0 made 0 where `relu` is set.
using WinogradGather = void (*)(
    const WinogradShape& shape, std::int64_t index, const float* layers, const float* bias, bool relu, float* result);

/// The fastest of either for blocks of `block` channels on this processor.
WinogradSpread winogradSpread(int block);
WinogradGather winogradGather(int block);

} // namespace scribo::cpu
