#include "operations.h"

#include "graph/value.h"

namespace scribo::builder {

namespace {

using format::ReductionKind;

/// The axes to reduce, counted from the front: those of the node, or all of them.
std::optional<std::vector<int>> reducedAxes(
    const OnnxNode& node, const std::optional<std::vector<std::int64_t>>& given, std::size_t rank)
{
    std::vector<int> axes;
    if (!given || given->empty()) {
        for (std::size_t axis = 0; axis < rank; ++axis) {
            axes.push_back(static_cast<int>(axis));
        }
        return axes;
    }
    for (std::int64_t axis : *given) {
        axes.push_back(cpu::normalAxis(axis, static_cast<int>(rank)));
        if (axes.back() < 0) {
            node.refuse("axis " + std::to_string(axis) + " does not exist");
            return std::nullopt;
        }
    }
    return axes;
}

void importReduce(Importer& importer, const OnnxNode& node, ReductionKind kind)
{
    const std::optional<std::vector<std::int64_t>> given = importer.listArgument(node, "axes", 1);
    const bool keepsEmpty = node.integer("noop_with_empty_axes", 0) != 0;
    const bool keepDims = node.integer("keepdims", 1) != 0;
    const int data = importer.tensor(node, 0);
    if (keepsEmpty && (!given || given->empty())) {
        importer.bind(node, 0, data);
        return;
    }
    const std::optional<Extents> extents = importer.extents(node, data);
    if (!extents) {
        return;
    }
    const std::optional<std::vector<int>> axes = reducedAxes(node, given, extents->size());
    if (!axes) {
        return;
    }
    format::ReductionT reduction;
    reduction.kind = kind;
    reduction.keep_dims = keepDims;
    reduction.axes = *axes;
    importer.bind(node, 0, importer.emit(node, reduction, {data}));
}

/// Over everything behind batch and channels.
void importGlobalPool(Importer& importer, const OnnxNode& node, ReductionKind kind)
{
    const int data = importer.tensor(node, 0);
    const std::optional<Extents> extents = importer.extents(node, data);
    if (!extents) {
        return;
    }
    format::ReductionT reduction;
    reduction.kind = kind;
    for (std::size_t axis = 2; axis < extents->size(); ++axis) {
        reduction.axes.push_back(static_cast<int>(axis));
    }
    importer.bind(node, 0, reduction.axes.empty() ? data : importer.emit(node, reduction, {data}));
}

template <ReductionKind kind>
void reduce(Importer& importer, const OnnxNode& node)
{
    importReduce(importer, node, kind);
}

template <ReductionKind kind>
void poolGlobally(Importer& importer, const OnnxNode& node)
{
    importGlobalPool(importer, node, kind);
}

} // namespace

void addReductions(ImportTable* table)
{
    (*table)["ReduceMean"] = {reduce<ReductionKind::Mean>, 1, 2};
    (*table)["ReduceMax"] = {reduce<ReductionKind::Max>, 1, 2};
    (*table)["ReduceSum"] = {reduce<ReductionKind::Sum>, 1, 2};
    (*table)["GlobalAveragePool"] = {poolGlobally<ReductionKind::Mean>, 1, 1};
    (*table)["GlobalMaxPool"] = {poolGlobally<ReductionKind::Max>, 1, 1};
}

} // namespace scribo::builder
