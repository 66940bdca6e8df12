#include "operations.h"

#include "graph/value.h"

#include <numeric>

namespace scribo::builder {

namespace {

void importTranspose(Importer& importer, const OnnxNode& node)
{
    const int data = importer.tensor(node, 0);
    std::vector<std::int64_t> permutation = node.integers("perm", {});
    if (permutation.empty()) {
        const std::optional<Extents> extents = importer.extents(node, data);
        if (!extents) {
            return;
        }
        permutation.resize(extents->size());
        std::iota(permutation.rbegin(), permutation.rend(), 0);
    }
    format::TransposeT transpose;
    for (std::int64_t axis : permutation) {
        const int normal = cpu::normalAxis(axis, static_cast<int>(permutation.size()));
        if (normal < 0) {
            node.refuse("attribute 'perm' makes no sense");
            return;
        }
        transpose.permutation.push_back(normal);
    }
    importer.bind(node, 0, importer.emit(node, transpose, {data}));
}

void importReshape(Importer& importer, const OnnxNode& node)
{
    const int shape = importer.tensor(node, 1);
    if (node.integer("allowzero", 0) != 0) {
        node.refuse("attribute 'allowzero' is not supported");
        return;
    }
    if (importer.tensor(shape).type != format::ElementType::Int64) {
        node.refuse("its shape must be integers");
        return;
    }
    importer.bind(node, 0, importer.emit(node, format::ReshapeT(), {importer.tensor(node, 0), shape}));
}

/// Two dimensions: what is before `axis` and what is from it on.
void importFlatten(Importer& importer, const OnnxNode& node)
{
    const int data = importer.tensor(node, 0);
    const std::optional<Extents> extents = importer.extents(node, data);
    if (!extents) {
        return;
    }
    const auto rank = static_cast<std::int64_t>(extents->size());
    std::int64_t axis = node.axis("axis", 1);
    axis = axis < 0 ? axis + rank : axis;
    if (axis < 0 || axis > rank) {
        node.refuse("attribute 'axis' makes no sense");
        return;
    }
    const std::int64_t head = elementCount({extents->begin(), extents->begin() + axis});
    const std::int64_t tail = elementCount({extents->begin() + axis, extents->end()});
    if (head < 1 && tail < 1) {
        node.refuse("the width decides both extents of its output");
        return;
    }
    const std::vector<std::int64_t> shape
        = head < 1 ? std::vector<std::int64_t>{-1, tail} : std::vector<std::int64_t>{head, -1};
    importer.bind(node, 0, importer.emit(node, format::ReshapeT(), {data, importer.constant({2}, shape)}));
}

/// The axes of `given` as the engine has them; nothing, with the node refused, when one is beyond any tensor.
std::optional<std::vector<int>> checkedAxes(const OnnxNode& node, const std::vector<std::int64_t>& given)
{
    constexpr std::int64_t mostAxes = 16;
    std::vector<int> axes;
    for (std::int64_t axis : given) {
        if (axis < -mostAxes || axis >= mostAxes) {
            node.refuse("axis " + std::to_string(axis) + " does not exist");
            return std::nullopt;
        }
        axes.push_back(static_cast<int>(axis));
    }
    return axes;
}

/// The axes that Squeeze drops when it names none: those whose extent is 1 at every width.
std::optional<std::vector<std::int64_t>> unitAxes(const Importer& importer, const OnnxNode& node)
{
    const std::optional<Extents> extents = importer.extents(node, importer.tensor(node, 0));
    if (!extents) {
        return std::nullopt;
    }
    std::vector<std::int64_t> axes;
    for (std::size_t axis = 0; axis < extents->size(); ++axis) {
        if ((*extents)[axis] == 1) {
            axes.push_back(static_cast<std::int64_t>(axis));
        }
    }
    return axes;
}

void importSqueeze(Importer& importer, const OnnxNode& node)
{
    std::optional<std::vector<std::int64_t>> given = importer.listArgument(node, "axes", 1);
    if (!given && importer.tensor(node, 1) < 0) {
        given = unitAxes(importer, node);
    }
    const std::optional<std::vector<int>> axes = given ? checkedAxes(node, *given) : std::nullopt;
    if (axes) {
        format::SqueezeT squeeze;
        squeeze.axes = *axes;
        importer.bind(node, 0, importer.emit(node, squeeze, {importer.tensor(node, 0)}));
    }
}

void importUnsqueeze(Importer& importer, const OnnxNode& node)
{
    const std::optional<std::vector<std::int64_t>> given = importer.listArgument(node, "axes", 1);
    if (!given && importer.tensor(node, 1) < 0) {
        node.refuse("it names no axes");
    }
    const std::optional<std::vector<int>> axes = given ? checkedAxes(node, *given) : std::nullopt;
    if (axes) {
        format::UnsqueezeT unsqueeze;
        unsqueeze.axes = *axes;
        importer.bind(node, 0, importer.emit(node, unsqueeze, {importer.tensor(node, 0)}));
    }
}

void importIdentity(Importer& importer, const OnnxNode& node)
{
    importer.bind(node, 0, importer.tensor(node, 0));
}

/// Outside training it does nothing.
void importDropout(Importer& importer, const OnnxNode& node)
{
    node.ignore("ratio");
    node.ignore("seed");
    const std::optional<std::vector<std::int64_t>> training
        = importer.tensor(node, 2) >= 0 ? importer.integers(node, 2, "training mode") : std::nullopt;
    if (training && training->front() != 0) {
        node.refuse("it was exported in training mode; call eval() before the export");
        return;
    }
    importer.bind(node, 0, importer.tensor(node, 0));
}

} // namespace

void addLayout(ImportTable* table)
{
    (*table)["Transpose"] = {importTranspose, 1, 1};
    (*table)["Reshape"] = {importReshape, 2, 2};
    (*table)["Flatten"] = {importFlatten, 1, 1};
    (*table)["Squeeze"] = {importSqueeze, 1, 2};
    (*table)["Unsqueeze"] = {importUnsqueeze, 1, 2};
    (*table)["Identity"] = {importIdentity, 1, 1};
    (*table)["Dropout"] = {importDropout, 1, 3};
}

} // namespace scribo::builder
