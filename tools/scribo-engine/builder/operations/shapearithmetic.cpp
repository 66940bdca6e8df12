#include "onnxtensor.h"
#include "operations.h"

#include <limits>

namespace scribo::builder {

namespace {

using format::ElementType;

void importConstant(Importer& importer, const OnnxNode& node)
{
    if (const onnx::TensorProto* value = node.tensor("value")) {
        Result<TensorT> constant = readTensor(*value);
        if (constant) {
            constant->name.clear();
            importer.bind(node, 0, importer.addTensor(std::move(*constant)));
        } else {
            node.refuse(constant.error().message);
        }
    } else if (node.has("value_float")) {
        importer.bind(node, 0, importer.constant({}, std::vector<float>{node.real("value_float", 0)}));
    } else if (node.has("value_int")) {
        importer.bind(node, 0, importer.constant({}, std::vector<std::int64_t>{node.integer("value_int", 0)}));
    } else if (const std::vector<float> reals = node.reals("value_floats"); !reals.empty()) {
        importer.bind(node, 0, importer.constant({static_cast<std::int64_t>(reals.size())}, reals));
    } else if (const std::vector<std::int64_t> integers = node.integers("value_ints", {}); !integers.empty()) {
        importer.bind(node, 0, importer.constant({static_cast<std::int64_t>(integers.size())}, integers));
    } else {
        node.refuse("it holds no value of a kind that is supported");
    }
}

/// The extents of a tensor; since opset 15 a node can ask for a range of the axes.
void importShape(Importer& importer, const OnnxNode& node)
{
    const std::int64_t start = node.integer("start", 0);
    const std::int64_t end = node.integer("end", std::numeric_limits<std::int64_t>::max());
    const int shape = importer.emit(node, format::ShapeOfT(), {importer.tensor(node, 0)});
    if (start == 0 && !node.has("end")) {
        importer.bind(node, 0, shape);
        return;
    }
    std::vector<int> inputs = {shape};
    for (std::int64_t argument : {start, end, std::int64_t(0), std::int64_t(1)}) {
        inputs.push_back(importer.constant({1}, std::vector<std::int64_t>{argument}));
    }
    importer.bind(node, 0, importer.emit(node, format::SliceT(), inputs));
}

bool integersExpected(const Importer& importer, const OnnxNode& node, int position)
{
    const bool right = importer.tensor(importer.tensor(node, position)).type == ElementType::Int64;
    if (!right) {
        node.refuse("its shape must be integers");
    }
    return right;
}

void importConstantOfShape(Importer& importer, const OnnxNode& node)
{
    format::FillT fill;
    fill.type = ElementType::Float32;
    if (const onnx::TensorProto* value = node.tensor("value")) {
        const Result<TensorT> constant = readTensor(*value);
        if (!constant) {
            node.refuse(constant.error().message);
            return;
        }
        fill.type = constant->type;
        fill.value = constant->type == ElementType::Float32 ? floatValues(*constant).front()
                                                            : static_cast<float>(integerValues(*constant).front());
    }
    if (integersExpected(importer, node, 0)) {
        importer.bind(node, 0, importer.emit(node, fill, {importer.tensor(node, 0)}));
    }
}

void importExpand(Importer& importer, const OnnxNode& node)
{
    if (integersExpected(importer, node, 1)) {
        importer.bind(
            node, 0, importer.emit(node, format::ExpandT(), {importer.tensor(node, 0), importer.tensor(node, 1)}));
    }
}

/// 0 and 1 from integers: min(1, |x|).
void castToTruth(Importer& importer, const OnnxNode& node, int data)
{
    const auto combine = [&](format::BinaryKind kind, int left, int right) {
        format::BinaryT binary;
        binary.kind = kind;
        return importer.emit(node, binary, {left, right});
    };
    if (importer.tensor(data).type != ElementType::Int64) {
        node.refuse("a cast from floats to truth values is not supported");
        return;
    }
    const int zero = importer.constant({}, std::vector<std::int64_t>{0});
    const int one = importer.constant({}, std::vector<std::int64_t>{1});
    const int negative = combine(format::BinaryKind::Subtract, zero, data);
    const int absolute = combine(format::BinaryKind::Maximum, data, negative);
    importer.bind(node, 0, combine(format::BinaryKind::Minimum, absolute, one));
}

void importCast(Importer& importer, const OnnxNode& node)
{
    // Says how a cast to an 8-bit float rounds; engines have no such floats.
    node.ignore("saturate");
    const std::int64_t wanted = node.integer("to", 0);
    const std::optional<ElementType> type
        = wanted < 0 || wanted > onnx::TensorProto::BFLOAT16 ? std::nullopt : elementType(static_cast<int>(wanted));
    if (!type) {
        node.refuse("a cast to element type " + std::to_string(wanted) + " is not supported");
        return;
    }
    format::CastT cast;
    cast.to = *type;
    const int data = importer.tensor(node, 0);
    if (wanted == onnx::TensorProto::BOOL) {
        castToTruth(importer, node, data);
        return;
    }
    importer.bind(node, 0, importer.tensor(data).type == cast.to ? data : importer.emit(node, cast, {data}));
}

} // namespace

void addShapeArithmetic(ImportTable* table)
{
    (*table)["Constant"] = {importConstant, 0, 0};
    (*table)["Shape"] = {importShape, 1, 1};
    (*table)["ConstantOfShape"] = {importConstantOfShape, 1, 1};
    (*table)["Expand"] = {importExpand, 2, 2};
    (*table)["Cast"] = {importCast, 1, 1};
}

} // namespace scribo::builder
