#include "model.h"

#include "format/enginefile.h"
#include "graph/enginereader.h"
#include "graph/shapes.h"

#include <cstring>

namespace scribo::cpu {

static_assert(AlignedBuffer::alignment % format::engineAlignment == 0);

Result<std::shared_ptr<Model>> Model::load(const void* bytes, std::size_t size)
{
    if (!bytes) {
        return failure("there are no bytes");
    }
    std::shared_ptr<Model> model(new Model(size));
    std::memcpy(model->file.data(), bytes, size);
    return readEngine(model->file.data(), size)
        .and_then([&](const format::Network* network) {
            model->content = network;
            return model->findBindings();
        })
        .map([&] { return std::move(model); });
}

Result<void> Model::findBindings()
{
    const Result<std::vector<Value>> narrowest = inferValues(*content, content->minimum_width());
    if (!narrowest) {
        return tl::unexpected(narrowest.error());
    }
    const Result<std::vector<Value>> widest = inferValues(*content, content->maximum_width());
    if (!widest) {
        return tl::unexpected(widest.error());
    }
    const std::vector<Value>& narrow = *narrowest;
    const std::vector<Value>& wide = *widest;
    std::vector<int> tensors = {content->inputs()->Get(0)};
    tensors.insert(tensors.end(), content->outputs()->begin(), content->outputs()->end());
    for (int tensor : tensors) {
        const auto i = static_cast<std::size_t>(tensor);
        Binding binding{content->tensors()->Get(static_cast<flatbuffers::uoffset_t>(tensor))->name()->str(), tensor,
            narrow[i].shape};
        if (narrow[i].shape.size() != wide[i].shape.size()) {
            return failure("the number of dimensions of '" + binding.name + "' depends on the width");
        }
        for (std::size_t axis = 0; axis < binding.shape.size(); ++axis) {
            if (narrow[i].shape[axis] != wide[i].shape[axis]) {
                binding.shape[axis] = -1;
            }
        }
        ends.push_back(std::move(binding));
    }
    ends[0].shape[3] = -1;
    return {};
}

} // namespace scribo::cpu
