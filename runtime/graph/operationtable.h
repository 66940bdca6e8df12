#pragma once

#include "operationrow.h"

#include "format/kindtable.h"

/// The table of all kinds of operations, and the functions that its rows name. Only operationrow.cpp and the files
/// that define these functions need it.
namespace scribo::cpu {

// spatialrules.cpp
Result<void> inferConvolution(Rule& rule);
bool isSoundConvolution(const format::Operation& operation);
std::int64_t countConvolution(const format::Operation& operation, const std::vector<Shape>& shapes);
std::string showConvolution(const format::Operation& operation);
Result<void> inferPooling(Rule& rule);
bool isSoundPooling(const format::Operation& operation);
std::string showPooling(const format::Operation& operation);
Result<void> inferReduction(Rule& rule);
bool isSoundReduction(const format::Operation& operation);
std::string showReduction(const format::Operation& operation);
Result<void> inferResize(Rule& rule);
Result<void> inferGridSample(Rule& rule);
std::string showGridSample(const format::Operation& operation);

// matrixrules.cpp
Result<void> inferRecurrent(Rule& rule);
bool isSoundRecurrent(const format::Operation& operation);
std::int64_t countRecurrent(const format::Operation& operation, const std::vector<Shape>& shapes);
std::string showRecurrent(const format::Operation& operation);
Result<void> inferFullyConnected(Rule& rule);
bool isSoundFullyConnected(const format::Operation& operation);
std::string showFullyConnected(const format::Operation& operation);
Result<void> inferMatrixProduct(Rule& rule);
std::int64_t countMatrixProduct(const format::Operation& operation, const std::vector<Shape>& shapes);

// elementrules.cpp
Result<void> inferActivation(Rule& rule);
bool isSoundActivation(const format::Operation& operation);
std::string showActivation(const format::Operation& operation);
Result<void> inferUnary(Rule& rule);
bool isSoundUnary(const format::Operation& operation);
std::string showUnary(const format::Operation& operation);
Result<void> inferBinary(Rule& rule);
bool isSoundBinary(const format::Operation& operation);
std::string showBinary(const format::Operation& operation);
Result<void> inferSoftmax(Rule& rule);
std::string showSoftmax(const format::Operation& operation);
Result<void> inferChannelAffine(Rule& rule);
Result<void> inferLayerNormalisation(Rule& rule);

// reshaperules.cpp
Result<void> inferReshape(Rule& rule);
Result<void> inferSqueeze(Rule& rule);
std::string showSqueeze(const format::Operation& operation);
Result<void> inferUnsqueeze(Rule& rule);
std::string showUnsqueeze(const format::Operation& operation);

// conversionrules.cpp
Result<void> inferShapeOf(Rule& rule);
Result<void> inferCast(Rule& rule);
bool isSoundCast(const format::Operation& operation);
Result<void> inferFill(Rule& rule);
bool isSoundFill(const format::Operation& operation);

// movementrules.cpp
Result<void> inferMovement(Rule& rule);

// movement.cpp
Result<Movement> moveTranspose(const Node& node);
std::string showTranspose(const format::Operation& operation);
Result<Movement> moveConcat(const Node& node);
std::string showConcat(const format::Operation& operation);
Result<Movement> moveGather(const Node& node);
std::string showGather(const format::Operation& operation);
Result<Movement> moveSlice(const Node& node);
Result<Movement> moveExpand(const Node& node);
Result<Movement> moveSplit(const Node& node);
bool isSoundSplit(const format::Operation& operation);
std::string showSplit(const format::Operation& operation);
Result<Movement> movePad(const Node& node);
bool isSoundPad(const format::Operation& operation);

/// A new kind goes to the end of the schema's union, and so to the end of this table.
// clang-format off
inline constexpr OperationRow operationTable[] = {
    OperationRow{format::OperationKind::Activation, takes(1), onlyFloats, inferActivation}
        .checks(isSoundActivation).shows(showActivation),
    OperationRow{format::OperationKind::Convolution, takes(2, 3).constants(1, 3), onlyFloats, inferConvolution}
        .checks(isSoundConvolution).counts(countConvolution).shows(showConvolution),
    OperationRow{format::OperationKind::Pooling, takes(1), onlyFloats, inferPooling}
        .checks(isSoundPooling).shows(showPooling),
    OperationRow{format::OperationKind::Reduction, takes(1), onlyFloats, inferReduction}
        .checks(isSoundReduction).shows(showReduction),
    OperationRow{format::OperationKind::Recurrent, takes(3, 6).constants(1, 4).gives(3), onlyFloats, inferRecurrent}
        .checks(isSoundRecurrent).counts(countRecurrent).shows(showRecurrent),
    OperationRow{format::OperationKind::FullyConnected, takes(2, 3).constants(1, 3), onlyFloats, inferFullyConnected}
        .checks(isSoundFullyConnected).counts(countMatrixProduct).shows(showFullyConnected),
    OperationRow{format::OperationKind::MatrixProduct, takes(2), onlyFloats, inferMatrixProduct}
        .counts(countMatrixProduct),
    OperationRow{format::OperationKind::Binary, takes(2), sameForAll, inferBinary}
        .checks(isSoundBinary).shows(showBinary).folds(),
    OperationRow{format::OperationKind::Unary, takes(1), onlyFloats, inferUnary}
        .checks(isSoundUnary).shows(showUnary).folds(),
    OperationRow{format::OperationKind::ChannelAffine, takes(3).constants(1, 3), onlyFloats, inferChannelAffine},
    OperationRow{format::OperationKind::LayerNormalisation, takes(2, 3), onlyFloats, inferLayerNormalisation},
    OperationRow{format::OperationKind::Softmax, takes(1), onlyFloats, inferSoftmax}
        .shows(showSoftmax),
    OperationRow{format::OperationKind::Transpose, takes(1), sameForAll, inferMovement}
        .moves(moveTranspose).shows(showTranspose).folds(),
    OperationRow{format::OperationKind::Reshape, takes(2), sameAsFirst, inferReshape}
        .folds(),
    OperationRow{format::OperationKind::Squeeze, takes(1), sameForAll, inferSqueeze}
        .shows(showSqueeze).folds(),
    OperationRow{format::OperationKind::Unsqueeze, takes(1), sameForAll, inferUnsqueeze}
        .shows(showUnsqueeze).folds(),
    OperationRow{format::OperationKind::Concat, takesList(), sameForAll, inferMovement}
        .moves(moveConcat).shows(showConcat).folds(),
    OperationRow{format::OperationKind::Gather, takes(2), sameAsFirst, inferMovement}
        .moves(moveGather).shows(showGather).folds(),
    OperationRow{format::OperationKind::Slice, takes(3, 5), sameAsFirst, inferMovement}
        .moves(moveSlice).folds(),
    OperationRow{format::OperationKind::ShapeOf, takes(1), alwaysIntegers, inferShapeOf}
        .folds(),
    OperationRow{format::OperationKind::Cast, takes(1), typeOfCast, inferCast}
        .checks(isSoundCast).folds(),
    OperationRow{format::OperationKind::Fill, takes(1), typeOfFill, inferFill}
        .checks(isSoundFill).folds(),
    OperationRow{format::OperationKind::Expand, takes(2), sameAsFirst, inferMovement}
        .moves(moveExpand).folds(),
    OperationRow{format::OperationKind::Split, takes(1).gives(anyNumber), sameForAll, inferMovement}
        .moves(moveSplit).checks(isSoundSplit).shows(showSplit),
    OperationRow{format::OperationKind::Pad, takes(1), onlyFloats, inferMovement}
        .moves(movePad).checks(isSoundPad),
    OperationRow{format::OperationKind::Resize, takes(2), floatsFromFirst, inferResize},
    OperationRow{format::OperationKind::GridSample, takes(2), onlyFloats, inferGridSample}
        .shows(showGridSample),
};
// clang-format on

static_assert(format::coversEveryKind(operationTable));

} // namespace scribo::cpu
