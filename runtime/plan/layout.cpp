#include "layout.h"

namespace scribo::cpu {

namespace {

using dnnl::memory;

Shape atLeastOneAxis(const Shape& shape)
{
    return shape.empty() ? Shape{1} : shape;
}

} // namespace

Layout plainLayout(const Shape& shape)
{
    const Shape dims = atLeastOneAxis(shape);
    return stridedLayout(dims, denseStrides(dims));
}

Layout anyLayout(const Shape& shape)
{
    return {atLeastOneAxis(shape), memory::data_type::f32, memory::format_tag::any};
}

Layout stridedLayout(const Shape& shape, const Shape& strides)
{
    return {shape, memory::data_type::f32, strides};
}

Layout blockedLayout(const Shape& shape, int block)
{
    return {shape, memory::data_type::f32, block == 16 ? memory::format_tag::nChw16c : memory::format_tag::nChw8c};
}

int channelBlock(const Layout& layout)
{
    const dnnl_memory_desc_t& desc = layout.data;
    const dnnl_blocking_desc_t& blocking = desc.format_desc.blocking;
    if (desc.ndims != 4 || desc.format_kind != dnnl_blocked || blocking.inner_nblks != 1) {
        return 0;
    }
    const auto block = static_cast<int>(blocking.inner_blks[0]);
    const bool isKnown = block == 8 || block == 16;
    return isKnown && layout == blockedLayout(layout.dims(), block) ? block : 0;
}

bool isPlain(const Layout& layout)
{
    const dnnl_memory_desc_t& desc = layout.data;
    if (desc.format_kind != dnnl_blocked || desc.format_desc.blocking.inner_nblks != 0 || desc.offset0 != 0) {
        return false;
    }
    std::int64_t stride = 1;
    for (int axis = desc.ndims; axis-- > 0;) {
        const bool padded = desc.padded_dims[axis] != desc.dims[axis];
        if (padded || (desc.dims[axis] != 1 && desc.format_desc.blocking.strides[axis] != stride)) {
            return false;
        }
        stride *= desc.dims[axis];
    }
    return true;
}

Layout transposed(const Layout& layout, const std::vector<int>& permutation)
{
    // oneDNN asks where an axis goes to, not where it comes from.
    std::vector<int> destination(permutation.size());
    for (std::size_t i = 0; i < permutation.size(); ++i) {
        destination[static_cast<std::size_t>(permutation[i])] = static_cast<int>(i);
    }
    return destination.empty() ? layout : layout.permute_axes(destination);
}

std::optional<Layout> reshaped(const Layout& layout, const Shape& shape)
{
    if (isPlain(layout)) {
        return plainLayout(shape);
    }
    const Layout result = layout.reshape(atLeastOneAxis(shape), true);
    return result ? std::optional(result) : std::nullopt;
}

} // namespace scribo::cpu
