#include "operations.h"

namespace scribo::builder {

namespace {

using format::BinaryKind;
using format::ElementType;

// Truth values are the integers 0 and 1. Exporters use them in shape arithmetic only. Written as sums and products, it
// needs no operations of its own.

int combine(Importer& importer, const OnnxNode& node, BinaryKind kind, int left, int right)
{
    format::BinaryT binary;
    binary.kind = kind;
    return importer.emit(node, binary, {left, right});
}

/// 1 - min(1, |a - b|).
void importEqual(Importer& importer, const OnnxNode& node)
{
    const int left = importer.tensor(node, 0);
    const int right = importer.tensor(node, 1);
    if (importer.tensor(left).type != ElementType::Int64) {
        node.refuse("it is supported on integers only");
        return;
    }
    const int one = importer.constant({}, std::vector<std::int64_t>{1});
    const int difference
        = combine(importer, node, BinaryKind::Maximum, combine(importer, node, BinaryKind::Subtract, left, right),
            combine(importer, node, BinaryKind::Subtract, right, left));
    const int unequal = combine(importer, node, BinaryKind::Minimum, one, difference);
    importer.bind(node, 0, combine(importer, node, BinaryKind::Subtract, one, unequal));
}

void importNot(Importer& importer, const OnnxNode& node)
{
    const int one = importer.constant({}, std::vector<std::int64_t>{1});
    importer.bind(node, 0, combine(importer, node, BinaryKind::Subtract, one, importer.tensor(node, 0)));
}

/// b + condition * (a - b).
void importWhere(Importer& importer, const OnnxNode& node)
{
    const int condition = importer.tensor(node, 0);
    const int yes = importer.tensor(node, 1);
    const int no = importer.tensor(node, 2);
    if (importer.tensor(yes).type != ElementType::Int64) {
        node.refuse("it is supported on integers only");
        return;
    }
    const int difference = combine(importer, node, BinaryKind::Subtract, yes, no);
    const int chosen = combine(importer, node, BinaryKind::Multiply, condition, difference);
    importer.bind(node, 0, combine(importer, node, BinaryKind::Add, no, chosen));
}

/// A branch that is taken at every width replaces the node.
void importIf(Importer& importer, const OnnxNode& node)
{
    const onnx::GraphProto* branches[] = {node.graph("else_branch"), node.graph("then_branch")};
    const std::vector<std::int64_t> condition = importer.fixedIntegers(node, importer.tensor(node, 0));
    if (condition.size() != 1 || !branches[0] || !branches[1]) {
        node.refuse("a branch that is not always the same is not supported");
        return;
    }
    importer.importBranch(node, *branches[condition.front() != 0 ? 1 : 0]);
}

} // namespace

void addLogic(ImportTable* table)
{
    (*table)["Equal"] = {importEqual, 2, 2};
    (*table)["Not"] = {importNot, 1, 1};
    (*table)["Where"] = {importWhere, 3, 3};
    (*table)["If"] = {importIf, 1, 1};
}

} // namespace scribo::builder
