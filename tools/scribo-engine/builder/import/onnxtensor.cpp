#include "onnxtensor.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace scribo::builder {

namespace {

using onnx::TensorProto;

/// IEEE 754 half precision, bit for bit.
float halfToFloat(std::uint16_t half)
{
    const int exponent = (half >> 10) & 0x1f;
    const int fraction = half & 0x3ff;
    float value = 0;
    if (exponent == 0x1f) {
        value = fraction ? std::numeric_limits<float>::quiet_NaN() : std::numeric_limits<float>::infinity();
    } else if (exponent == 0) {
        value = std::ldexp(static_cast<float>(fraction), -24);
    } else {
        value = std::ldexp(static_cast<float>(fraction + 0x400), exponent - 25);
    }
    return half & 0x8000 ? -value : value;
}

/// The elements of raw_data, which is little-endian as this machine is.
template <class Stored, class Value, class Convert>
std::vector<Value> rawValues(const std::string& raw, Convert convert)
{
    std::vector<Value> values(raw.size() / sizeof(Stored));
    for (std::size_t i = 0; i < values.size(); ++i) {
        Stored stored;
        std::memcpy(&stored, raw.data() + i * sizeof(Stored), sizeof(Stored));
        values[i] = static_cast<Value>(convert(stored)); // NOLINT(bugprone-signed-char-misuse): an int8 is a number
    }
    return values;
}

/// Elements of type Stored, either in raw_data or, one each, in the repeated field `field`.
template <class Stored, class Value, class Field, class Convert>
std::vector<Value> storedValues(const TensorProto& proto, const Field& field, Convert convert)
{
    if (proto.has_raw_data()) {
        return proto.raw_data().size() % sizeof(Stored) == 0 ? rawValues<Stored, Value>(proto.raw_data(), convert)
                                                             : std::vector<Value>();
    }
    std::vector<Value> values;
    values.reserve(field.size());
    for (auto element : field) {
        values.push_back(static_cast<Value>(convert(static_cast<Stored>(element))));
    }
    return values;
}

std::vector<float> readFloats(const TensorProto& proto)
{
    const auto same = [](auto value) { return value; };
    switch (proto.data_type()) {
    case TensorProto::DOUBLE:
        return storedValues<double, float>(proto, proto.double_data(), same);
    case TensorProto::FLOAT16:
        return storedValues<std::uint16_t, float>(proto, proto.int32_data(), halfToFloat);
    default:
        return storedValues<float, float>(proto, proto.float_data(), same);
    }
}

std::vector<std::int64_t> readIntegers(const TensorProto& proto)
{
    const auto same = [](auto value) { return value; };
    switch (proto.data_type()) {
    case TensorProto::BOOL:
    case TensorProto::UINT8:
        return storedValues<std::uint8_t, std::int64_t>(proto, proto.int32_data(), same);
    case TensorProto::INT8:
        return storedValues<std::int8_t, std::int64_t>(proto, proto.int32_data(), same);
    case TensorProto::INT32:
        return storedValues<std::int32_t, std::int64_t>(proto, proto.int32_data(), same);
    default:
        return storedValues<std::int64_t, std::int64_t>(proto, proto.int64_data(), same);
    }
}

std::string typeName(int dataType)
{
    return TensorProto::DataType_IsValid(dataType)
        ? TensorProto::DataType_Name(static_cast<TensorProto::DataType>(dataType))
        : std::to_string(dataType);
}

} // namespace

std::optional<format::ElementType> elementType(int dataType)
{
    switch (dataType) {
    case TensorProto::FLOAT:
    case TensorProto::DOUBLE:
    case TensorProto::FLOAT16:
        return format::ElementType::Float32;
    case TensorProto::INT64:
    case TensorProto::INT32:
    case TensorProto::INT8:
    case TensorProto::UINT8:
    case TensorProto::BOOL:
        return format::ElementType::Int64;
    default:
        return std::nullopt;
    }
}

Result<TensorT> readTensor(const TensorProto& proto)
{
    const std::string title = "constant '" + proto.name() + "' ";
    const std::optional<format::ElementType> type = elementType(proto.data_type());
    if (!type) {
        return failure(title + "has an element type that is not supported (" + typeName(proto.data_type()) + ")");
    }
    if (proto.data_location() == TensorProto::EXTERNAL) {
        return failure(title + "keeps its data in another file; export the model as a single file");
    }
    const Extents extents(proto.dims().begin(), proto.dims().end());
    const std::int64_t count = elementCount(extents);
    if (count <= 0) {
        return failure(title + (count == 0 ? "is empty" : "has impossible dimensions"));
    }
    TensorT tensor = type == format::ElementType::Float32 ? makeConstant(proto.name(), extents, readFloats(proto))
                                                          : makeConstant(proto.name(), extents, readIntegers(proto));
    const std::size_t elementSize = type == format::ElementType::Float32 ? sizeof(float) : sizeof(std::int64_t);
    if (tensor.constant.size() != static_cast<std::size_t>(count) * elementSize) {
        return failure(title + "does not hold as many values as its dimensions say");
    }
    return tensor;
}

} // namespace scribo::builder
