#include "widthprofile.h"

#include "graph/shapes.h"

namespace scribo::builder {

namespace {

/// Narrows what is known of a tensor down to what holds for `value` as well. False when that has
/// another number of dimensions.
bool merge(TensorProfile* known, const cpu::Value& value)
{
    if (known->extents.size() != value.shape.size()) {
        return false;
    }
    for (std::size_t axis = 0; axis < value.shape.size(); ++axis) {
        if (known->extents[axis] != value.shape[axis]) {
            known->extents[axis] = -1;
        }
    }
    if (known->integers != value.integers) {
        known->integers.clear();
    }
    return true;
}

bool mergeAll(Profile* profile, const std::vector<cpu::Value>& values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!merge(&(*profile)[i], values[i])) {
            return false;
        }
    }
    return true;
}

} // namespace

Result<Profile> profileNetwork(const format::NetworkT& network, const WidthRange& range)
{
    std::size_t constantBytes = 0;
    for (const auto& tensor : network.tensors) {
        constantBytes += tensor->constant.size();
    }
    // A buffer ends at 2 GB; beyond the constants there is little in it.
    constexpr std::size_t mostConstantBytes = std::size_t(2000) << 20;
    if (constantBytes > mostConstantBytes) {
        return failure("its constants are too large for an engine file");
    }
    flatbuffers::FlatBufferBuilder buffer;
    buffer.Finish(format::Network::Pack(buffer, &network));
    const auto* packed = flatbuffers::GetRoot<format::Network>(buffer.GetBufferPointer());
    Profile profile;
    if (network.operations.empty()) {
        for (const auto& tensor : network.tensors) {
            profile.push_back({tensor->dims, {}});
        }
        return profile;
    }
    for (int width = range.minimum; width <= range.maximum; ++width) {
        Result<std::vector<cpu::Value>> values = cpu::inferValues(*packed, width);
        if (!values) {
            return failure("at width " + std::to_string(width) + ": " + values.error().message);
        }
        if (profile.empty()) {
            for (cpu::Value& value : *values) {
                profile.push_back({std::move(value.shape), std::move(value.integers)});
            }
        } else if (!mergeAll(&profile, *values)) {
            return failure("at width " + std::to_string(width) + ": a tensor has another number of dimensions");
        }
    }
    return profile;
}

} // namespace scribo::builder
