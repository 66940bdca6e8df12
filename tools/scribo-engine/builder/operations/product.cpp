#include "operations.h"

namespace scribo::builder {

namespace {

void importMatMul(Importer& importer, const OnnxNode& node)
{
    const int left = importer.tensor(node, 0);
    const int right = importer.tensor(node, 1);
    const TensorT& weights = importer.tensor(right);
    if (isConstant(weights) && weights.dims.size() == 2) {
        importer.bind(node, 0, importer.emit(node, format::FullyConnectedT(), {left, right}));
    } else {
        importer.bind(node, 0, importer.emit(node, format::MatrixProductT(), {left, right}));
    }
}

int transposed(Importer& importer, const OnnxNode& node, int matrix)
{
    format::TransposeT swap;
    swap.permutation = {1, 0};
    return importer.emit(node, swap, {matrix});
}

int scaled(Importer& importer, const OnnxNode& node, int data, float factor)
{
    if (factor == 1) {
        return data;
    }
    format::BinaryT multiply;
    multiply.kind = format::BinaryKind::Multiply;
    return importer.emit(node, multiply, {data, importer.constant({}, std::vector<float>{factor})});
}

/// alpha * A * B + beta * C, with A and B transposed on demand.
void importGemm(Importer& importer, const OnnxNode& node)
{
    const bool leftSwapped = node.integer("transA", 0) != 0;
    const bool rightSwapped = node.integer("transB", 0) != 0;
    const float alpha = node.real("alpha", 1);
    const float beta = node.real("beta", 1);
    int left = importer.tensor(node, 0);
    int right = importer.tensor(node, 1);
    if (importer.tensor(right).type != format::ElementType::Float32) {
        node.refuse("it is supported on floats only");
        return;
    }
    left = leftSwapped ? transposed(importer, node, left) : left;
    right = scaled(importer, node, rightSwapped ? transposed(importer, node, right) : right, alpha);
    const TensorT& weights = importer.tensor(right);
    int result = isConstant(weights) && weights.dims.size() == 2
        ? importer.emit(node, format::FullyConnectedT(), {left, right})
        : importer.emit(node, format::MatrixProductT(), {left, right});
    if (const int bias = importer.tensor(node, 2); bias >= 0) {
        format::BinaryT add;
        result = importer.emit(node, add, {result, scaled(importer, node, bias, beta)});
    }
    importer.bind(node, 0, result);
}

} // namespace

void addProducts(ImportTable* table)
{
    (*table)["MatMul"] = {importMatMul, 2, 2};
    (*table)["Gemm"] = {importGemm, 2, 3};
}

} // namespace scribo::builder
