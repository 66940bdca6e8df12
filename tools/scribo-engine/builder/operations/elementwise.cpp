#include "operations.h"

namespace scribo::builder {

namespace {

using format::BinaryKind;
using format::UnaryKind;

/// Max, Min and Sum take any number of inputs, one after the other.
template <BinaryKind kind>
void importBinary(Importer& importer, const OnnxNode& node)
{
    format::BinaryT binary;
    binary.kind = kind;
    int result = importer.tensor(node, 0);
    for (int i = 1; i < node.inputCount(); ++i) {
        const int next = importer.tensor(node, i);
        if (next < 0) {
            node.refuse("input " + std::to_string(i) + " is missing");
            return;
        }
        result = importer.emit(node, binary, {result, next});
    }
    importer.bind(node, 0, result);
}

/// Power works on floats; an exponent is often written as an integer.
void importPow(Importer& importer, const OnnxNode& node)
{
    format::CastT toFloat;
    toFloat.to = format::ElementType::Float32;
    int exponent = importer.tensor(node, 1);
    if (importer.tensor(exponent).type != format::ElementType::Float32) {
        exponent = importer.emit(node, toFloat, {exponent});
    }
    format::BinaryT power;
    power.kind = BinaryKind::Power;
    importer.bind(node, 0, importer.emit(node, power, {importer.tensor(node, 0), exponent}));
}

template <UnaryKind kind>
void importUnary(Importer& importer, const OnnxNode& node)
{
    format::UnaryT unary;
    unary.kind = kind;
    importer.bind(node, 0, importer.emit(node, unary, {importer.tensor(node, 0)}));
}

} // namespace

void addElementwise(ImportTable* table)
{
    (*table)["Add"] = {importBinary<BinaryKind::Add>, 2, 2};
    (*table)["Sub"] = {importBinary<BinaryKind::Subtract>, 2, 2};
    (*table)["Mul"] = {importBinary<BinaryKind::Multiply>, 2, 2};
    (*table)["Div"] = {importBinary<BinaryKind::Divide>, 2, 2};
    (*table)["Pow"] = {importPow, 2, 2};
    (*table)["Max"] = {importBinary<BinaryKind::Maximum>, 1, anyNumber};
    (*table)["Min"] = {importBinary<BinaryKind::Minimum>, 1, anyNumber};
    (*table)["Sum"] = {importBinary<BinaryKind::Add>, 1, anyNumber};
    (*table)["Sqrt"] = {importUnary<UnaryKind::Sqrt>, 1, 1};
    (*table)["Exp"] = {importUnary<UnaryKind::Exp>, 1, 1};
    (*table)["Log"] = {importUnary<UnaryKind::Log>, 1, 1};
    (*table)["Neg"] = {importUnary<UnaryKind::Negate>, 1, 1};
    (*table)["Abs"] = {importUnary<UnaryKind::Absolute>, 1, 1};
    (*table)["Reciprocal"] = {importUnary<UnaryKind::Reciprocal>, 1, 1};
    (*table)["Erf"] = {importUnary<UnaryKind::Erf>, 1, 1};
    (*table)["Floor"] = {importUnary<UnaryKind::Floor>, 1, 1};
    (*table)["Ceil"] = {importUnary<UnaryKind::Ceil>, 1, 1};
}

} // namespace scribo::builder
