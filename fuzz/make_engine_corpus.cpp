// Writes small engines for fuzz_engine to start from: make_engine_corpus FOLDER.

#include "networkmaker.h"
#include "randomarrays.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace {

using namespace scribo;
using test::NetworkMaker;

void write(const std::string& folder, const std::string& name, NetworkMaker& maker)
{
    const std::vector<std::uint8_t> bytes = maker.bytes(8, 64);
    std::ofstream file(folder + "/" + name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// All operations that need no constants of a certain shape, one after the other.
NetworkMaker elementwise()
{
    NetworkMaker maker;
    const int picture = maker.input(1, 2, 4);
    format::PoolingT pooling;
    pooling.kernel = {2, 3};
    pooling.strides = {1, 2};
    pooling.pads = {1, 1, 0, 1};
    pooling.ceil_mode = true;
    int current = maker.add(format::ActivationT(), {maker.add(pooling, {picture})});
    current = maker.add(format::UnaryT(), {maker.add(format::BinaryT(), {current, current})});
    current = maker.add(format::ChannelAffineT(), {current, maker.floats({2}, {1, 2}), maker.floats({2}, {3, 4})});
    format::LayerNormalisationT normalisation;
    normalisation.axis = 1;
    format::TransposeT transpose;
    transpose.permutation = {0, 1, 3, 2};
    current = maker.add(format::MatrixProductT(), {current, maker.add(transpose, {current})});
    current = maker.add(normalisation, {current, maker.floats({2, 4, 4}, std::vector<float>(32, 0.5F))});
    format::ReductionT reduction;
    reduction.axes = {2};
    current = maker.add(reduction, {current});
    maker.output(maker.add(format::SoftmaxT(), {current}), "output");
    return maker;
}

/// Operations that move values, with shape arithmetic.
NetworkMaker movement()
{
    constexpr auto integer = format::ElementType::Int64;
    NetworkMaker maker;
    const int picture = maker.input(1, 2, 4);
    format::TransposeT transpose;
    transpose.permutation = {3, 0, 1, 2};
    const int turned = maker.add(transpose, {picture});
    const int shape = maker.add(format::ShapeOfT(), {turned}, integer);
    const int first = maker.add(format::GatherT(), {shape, maker.list({0, 1})}, integer);
    const int rows
        = maker.add(format::ReshapeT(), {turned, maker.add(format::ConcatT(), {first, maker.list({-1})}, integer)});
    format::SplitT split;
    split.axis = 2;
    split.sizes = {3, 5};
    const std::vector<int> parts = maker.addAll(split, {rows}, 2);
    const int cut
        = maker.add(format::SliceT(), {parts[1], maker.list({-1}), maker.list({0}), maker.list({2}), maker.list({-2})});
    format::PadT pad;
    pad.begin = {0, 0, 1};
    pad.end = {0, 0, 1};
    format::ConcatT concat;
    concat.axis = -1;
    const int joined = maker.add(concat, {maker.add(pad, {cut}), parts[0]});
    format::BinaryT power;
    power.kind = format::BinaryKind::Multiply;
    const int filled = maker.add(format::FillT(), {maker.add(power, {first, maker.list({1, 3})}, integer)});
    format::UnsqueezeT unsqueeze;
    unsqueeze.axes = {-1};
    const int spread = maker.add(format::ExpandT(), {maker.add(unsqueeze, {filled}), maker.list({1, 3, 7})});
    const int cast
        = maker.add(format::CastT(), {maker.add(format::GatherT(), {shape, maker.integers({}, {0})}, integer)});
    maker.output(maker.add(format::BinaryT(), {maker.add(format::BinaryT(), {joined, spread}), cast}), "output");
    return maker;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: make_engine_corpus FOLDER\n");
        return 2;
    }
    const std::string folder = arguments[1];
    NetworkMaker lstm = test::smallCrnn(format::CellKind::Lstm, 3, 1, 2, 2);
    NetworkMaker gru = test::smallCrnn(format::CellKind::Gru, 3, 1, 2, 2);
    NetworkMaker first = elementwise();
    NetworkMaker second = movement();
    write(folder, "lstm", lstm);
    write(folder, "gru", gru);
    write(folder, "elementwise", first);
    write(folder, "movement", second);
    return 0;
}
