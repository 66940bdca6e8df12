#include "model.h"

#include "format/enginefile.h"
#include "graph/shapes.h"

#include <cstring>

namespace scribo::cpu {

static_assert(AlignedBuffer::alignment % format::engineAlignment == 0);

std::shared_ptr<Model> Model::load(const void* bytes, std::size_t size, std::string* error)
{
    if (!bytes) {
        *error = "there are no bytes";
        return nullptr;
    }
    std::shared_ptr<Model> model(new Model(size));
    std::memcpy(model->file.data(), bytes, size);
    model->content = format::readEngine(model->file.data(), size, error);
    return model->content && model->findBindings(error) ? model : nullptr;
}

bool Model::findBindings(std::string* error)
{
    std::vector<Value> narrow;
    std::vector<Value> wide;
    if (!inferValues(*content, content->minimum_width(), &narrow, error)
        || !inferValues(*content, content->maximum_width(), &wide, error)) {
        return false;
    }
    std::vector<int> tensors = {content->inputs()->Get(0)};
    tensors.insert(tensors.end(), content->outputs()->begin(), content->outputs()->end());
    for (int tensor : tensors) {
        const auto i = static_cast<std::size_t>(tensor);
        Binding binding{content->tensors()->Get(static_cast<flatbuffers::uoffset_t>(tensor))->name()->str(), tensor,
            narrow[i].shape};
        if (narrow[i].shape.size() != wide[i].shape.size()) {
            *error = "the number of dimensions of '" + binding.name + "' depends on the width";
            return false;
        }
        for (std::size_t axis = 0; axis < binding.shape.size(); ++axis) {
            if (narrow[i].shape[axis] != wide[i].shape[axis]) {
                binding.shape[axis] = -1;
            }
        }
        ends.push_back(std::move(binding));
    }
    ends[0].shape[3] = -1;
    return true;
}

} // namespace scribo::cpu
