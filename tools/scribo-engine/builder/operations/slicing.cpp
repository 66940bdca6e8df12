#include "operations.h"

#include "graph/value.h"

#include <algorithm>
#include <numeric>

namespace scribo::builder {

namespace {

using format::ElementType;

void importConcat(Importer& importer, const OnnxNode& node)
{
    if (!node.has("axis")) {
        node.refuse("attribute 'axis' is missing");
        return;
    }
    format::ConcatT concat;
    concat.axis = node.axis("axis", 0);
    std::vector<int> inputs;
    for (int i = 0; i < node.inputCount(); ++i) {
        inputs.push_back(importer.tensor(node, i));
    }
    if (std::count(inputs.begin(), inputs.end(), -1) > 0) {
        node.refuse("an input is missing");
        return;
    }
    importer.bind(node, 0, inputs.size() == 1 ? inputs.front() : importer.emit(node, concat, inputs));
}

void importGather(Importer& importer, const OnnxNode& node)
{
    if (importer.tensor(importer.tensor(node, 1)).type != ElementType::Int64) {
        node.refuse("its indices must be integers");
        return;
    }
    format::GatherT gather;
    gather.axis = node.axis("axis", 0);
    importer.bind(node, 0, importer.emit(node, gather, {importer.tensor(node, 0), importer.tensor(node, 1)}));
}

/// The inputs of a Slice that are lists: starts, ends, axes and steps; before opset 10 they were
/// attributes, and there were no steps.
std::vector<int> sliceLists(Importer& importer, const OnnxNode& node)
{
    std::vector<int> lists;
    if (importer.opset() >= 10) {
        for (int i = 1; i < 5; ++i) {
            lists.push_back(importer.tensor(node, i));
        }
        return lists;
    }
    for (const char* name : {"starts", "ends", "axes"}) {
        const std::vector<std::int64_t> values = node.integers(name, {});
        const bool given = !values.empty();
        lists.push_back(given ? importer.constant({static_cast<std::int64_t>(values.size())}, values) : -1);
    }
    lists.push_back(-1);
    return lists;
}

/// How many axes a Slice names, which is the length of its list of starts.
std::optional<std::int64_t> slicedAxes(const Importer& importer, const OnnxNode& node, int starts)
{
    const std::optional<Extents> extents = importer.extents(node, starts);
    if (!extents) {
        return std::nullopt;
    }
    if (extents->size() != 1 || extents->front() < 1 || extents->front() > 8) {
        node.refuse("its starts make no sense");
        return std::nullopt;
    }
    return extents->front();
}

void importSlice(Importer& importer, const OnnxNode& node)
{
    std::vector<int> inputs = sliceLists(importer, node);
    if (inputs[0] < 0 || inputs[1] < 0) {
        node.refuse("its starts or ends are missing");
        return;
    }
    const std::optional<std::int64_t> count = slicedAxes(importer, node, inputs[0]);
    if (!count) {
        return;
    }
    const bool integers = std::all_of(inputs.begin(), inputs.end(),
        [&](int list) { return list < 0 || importer.tensor(list).type == ElementType::Int64; });
    if (!integers) {
        node.refuse("its limits must be integers");
        return;
    }
    if (inputs[2] < 0) {
        std::vector<std::int64_t> axes(static_cast<std::size_t>(*count));
        std::iota(axes.begin(), axes.end(), 0);
        inputs[2] = importer.constant({*count}, axes);
    }
    if (inputs[3] < 0) {
        inputs[3] = importer.constant({*count}, std::vector<std::int64_t>(static_cast<std::size_t>(*count), 1));
    }
    inputs.insert(inputs.begin(), importer.tensor(node, 0));
    importer.bind(node, 0, importer.emit(node, format::SliceT(), inputs));
}

/// The sizes of equal parts, the last one smaller where they do not come out even.
std::optional<std::vector<std::int64_t>> equalParts(const Importer& importer, const OnnxNode& node, int axis)
{
    const std::optional<Extents> extents = importer.extents(node, importer.tensor(node, 0));
    if (!extents) {
        return std::nullopt;
    }
    const int normal = cpu::normalAxis(axis, static_cast<int>(extents->size()));
    const std::int64_t parts = node.outputCount();
    const std::int64_t extent = normal < 0 ? -1 : (*extents)[static_cast<std::size_t>(normal)];
    const std::int64_t size = (extent + parts - 1) / parts;
    const std::int64_t last = extent - size * (parts - 1);
    if (extent < 1 || last < 1) {
        node.refuse("it cannot be split into " + std::to_string(parts) + " equal parts");
        return std::nullopt;
    }
    std::vector<std::int64_t> sizes(static_cast<std::size_t>(parts), size);
    sizes.back() = last;
    return sizes;
}

void importSplit(Importer& importer, const OnnxNode& node)
{
    format::SplitT split;
    split.axis = node.axis("axis", 0);
    node.ignore("num_outputs");
    std::optional<std::vector<std::int64_t>> sizes = importer.listArgument(node, "split", 1);
    if (!sizes && importer.tensor(node, 1) < 0) {
        sizes = equalParts(importer, node, split.axis);
    }
    if (!sizes) {
        return;
    }
    if (sizes->size() != static_cast<std::size_t>(node.outputCount())) {
        node.refuse("it has " + std::to_string(node.outputCount()) + " outputs for " + std::to_string(sizes->size())
            + " parts");
        return;
    }
    split.sizes = *sizes;
    const std::vector<int> parts = importer.emitAll(node, split, {importer.tensor(node, 0)}, node.outputCount());
    for (int i = 0; i < node.outputCount(); ++i) {
        importer.bind(node, i, parts[static_cast<std::size_t>(i)]);
    }
}

/// Repeats along every axis as often as the node says, one axis after the other.
void importTile(Importer& importer, const OnnxNode& node)
{
    const std::optional<std::vector<std::int64_t>> repeats = importer.integers(node, 1, "repeats");
    if (!repeats) {
        return;
    }
    int result = importer.tensor(node, 0);
    for (std::size_t axis = 0; axis < repeats->size(); ++axis) {
        constexpr std::int64_t mostRepeats = 1024;
        const std::int64_t times = (*repeats)[axis];
        if (times < 1 || times > mostRepeats) {
            node.refuse("repeating " + std::to_string(times) + " times is not supported");
            return;
        }
        if (times > 1) {
            format::ConcatT concat;
            concat.axis = static_cast<int>(axis);
            result = importer.emit(node, concat, std::vector<int>(static_cast<std::size_t>(times), result));
        }
    }
    importer.bind(node, 0, result);
}

/// The pads of the axes in input 3 (opset 18) as those of all `rank` axes; nothing, with the node refused, when they do
/// not fit.
std::optional<std::vector<std::int64_t>> spreadPads(
    const Importer& importer, const OnnxNode& node, std::size_t rank, const std::vector<std::int64_t>& pads)
{
    std::vector<std::int64_t> axes(rank);
    std::iota(axes.begin(), axes.end(), 0);
    if (importer.tensor(node, 3) >= 0) {
        const std::optional<std::vector<std::int64_t>> given = importer.integers(node, 3, "axes");
        if (!given) {
            return std::nullopt;
        }
        axes = *given;
    }
    std::vector<std::int64_t> spread(2 * rank, 0);
    bool fits = pads.size() == 2 * axes.size();
    for (std::size_t i = 0; fits && i < axes.size(); ++i) {
        const int axis = cpu::normalAxis(axes[i], static_cast<int>(rank));
        fits = axis >= 0;
        if (fits) {
            spread[static_cast<std::size_t>(axis)] = pads[i];
            spread[rank + static_cast<std::size_t>(axis)] = pads[axes.size() + i];
        }
    }
    if (!fits) {
        node.refuse("its pads do not fit its input");
        return std::nullopt;
    }
    return spread;
}

void importPad(Importer& importer, const OnnxNode& node)
{
    const std::string mode = node.text("mode", "constant");
    if (mode != "constant") {
        node.refuse("mode '" + mode + "' is not supported");
        return;
    }
    const std::optional<std::vector<std::int64_t>> given = importer.listArgument(node, "pads", 1);
    if (!given && importer.tensor(node, 1) < 0) {
        node.refuse("its pads are missing");
        return;
    }
    const std::optional<Extents> extents = importer.extents(node, importer.tensor(node, 0));
    const auto pads = given && extents ? spreadPads(importer, node, extents->size(), *given) : std::nullopt;
    if (!pads) {
        return;
    }
    constexpr std::int64_t largestPad = 1 << 14;
    if (std::any_of(pads->begin(), pads->end(), [](std::int64_t pad) { return pad < 0 || pad > largestPad; })) {
        node.refuse("negative or absurd pads are not supported");
        return;
    }
    format::PadT pad;
    const auto middle = pads->begin() + static_cast<std::ptrdiff_t>(extents->size());
    pad.begin.assign(pads->begin(), middle);
    pad.end.assign(middle, pads->end());
    // Before opset 11 the value, like the pads, was an attribute.
    pad.value = importer.opset() < 11 ? node.real("value", 0) : 0;
    if (importer.tensor(node, 2) >= 0) {
        const TensorT* value = importer.floats(node, 2, "padding value");
        if (!value) {
            return;
        }
        pad.value = floatValues(*value).front();
    }
    importer.bind(node, 0, importer.emit(node, pad, {importer.tensor(node, 0)}));
}

} // namespace

void addSlicing(ImportTable* table)
{
    (*table)["Concat"] = {importConcat, 1, anyNumber};
    (*table)["Gather"] = {importGather, 2, 2};
    (*table)["Slice"] = {importSlice, 1, 5};
    (*table)["Split"] = {importSplit, 1, 2};
    (*table)["Tile"] = {importTile, 2, 2};
    (*table)["Pad"] = {importPad, 1, 4};
}

} // namespace scribo::builder
