#pragma once

#include "engine_generated.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scribo::cpu {

/// Extents, outermost first; empty for a single number.
using Shape = std::vector<std::int64_t>;

/// More elements than this in one tensor (a gigabyte of floats) is a damaged or hostile engine.
constexpr std::int64_t maximumElements = std::int64_t(1) << 28;
/// Shape arithmetic and index lists are small; this keeps what a hostile engine may ask for small.
constexpr std::int64_t maximumIntegers = std::int64_t(1) << 20;
/// The integers of all tensors of a network are kept at the same time, so that their sum is limited too.
constexpr std::int64_t maximumNetworkIntegers = std::int64_t(1) << 22;

/// What is known of a tensor once the width is known. Integers only ever describe shapes and
/// positions, so every element of an integer tensor is known; of floats only the shape is, and
/// whether all elements are the same number.
struct Value
{
    format::ElementType type = format::ElementType::Float32;
    Shape shape;
    /// All elements of an integer tensor, in row-major order.
    std::vector<std::int64_t> integers;
    /// The number that every element of a float tensor has.
    std::optional<float> uniform;

    bool isInteger() const { return type == format::ElementType::Int64; }
    int rank() const { return static_cast<int>(shape.size()); }
};

/// The number of elements, or -1 when there are more than maximumElements or an extent is negative.
std::int64_t countElements(const Shape& shape);

/// The product of the extents from axis `first` up to axis `last`, of a shape that has been counted.
std::int64_t countRange(const Shape& shape, int first, int last);

/// Distances between neighbours along each axis of a row-major tensor.
Shape denseStrides(const Shape& shape);

/// The strides with which a row-major tensor of `shape` is read as one of `target`: 0 along axes
/// that are repeated.
Shape broadcastStrides(const Shape& shape, const Shape& target);

/// The common shape of two operands of an elementwise operation; nothing when they do not fit.
std::optional<Shape> broadcastShapes(const Shape& a, const Shape& b);

/// Like "1x3x32x160"; "()" for a single number.
std::string toString(const Shape& shape);

/// `axis` counted from the front; -1 when it is outside -rank ... rank - 1.
int normalAxis(std::int64_t axis, int rank);

} // namespace scribo::cpu
