#include "tensordata.h"

#include <cstring>

namespace scribo::builder {

namespace {

template <class T>
std::vector<T> valuesOf(const TensorT& tensor)
{
    std::vector<T> values(tensor.constant.size() / sizeof(T));
    if (!values.empty()) {
        std::memcpy(values.data(), tensor.constant.data(), values.size() * sizeof(T));
    }
    return values;
}

template <class T>
TensorT constantOf(std::string name, format::ElementType type, Extents extents, const std::vector<T>& values)
{
    TensorT tensor;
    tensor.name = std::move(name);
    tensor.type = type;
    tensor.dims = std::move(extents);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(values.data());
    tensor.constant.assign(bytes, bytes + values.size() * sizeof(T));
    return tensor;
}

} // namespace

std::int64_t elementCount(const Extents& extents)
{
    constexpr std::int64_t limit = std::int64_t(1) << 28;
    std::int64_t count = 1;
    bool empty = false;
    for (std::int64_t extent : extents) {
        if (extent < 0 || extent > limit) {
            return -1;
        }
        if (extent == 0) {
            empty = true;
            continue;
        }
        count *= extent;
        if (count > limit) {
            return -1;
        }
    }
    return empty ? 0 : count;
}

bool isConstant(const TensorT& tensor)
{
    return !tensor.constant.empty();
}

std::vector<float> floatValues(const TensorT& tensor)
{
    return valuesOf<float>(tensor);
}

std::vector<std::int64_t> integerValues(const TensorT& tensor)
{
    return valuesOf<std::int64_t>(tensor);
}

TensorT makeConstant(std::string name, Extents extents, const std::vector<float>& values)
{
    return constantOf(std::move(name), format::ElementType::Float32, std::move(extents), values);
}

TensorT makeConstant(std::string name, Extents extents, const std::vector<std::int64_t>& values)
{
    return constantOf(std::move(name), format::ElementType::Int64, std::move(extents), values);
}

} // namespace scribo::builder
