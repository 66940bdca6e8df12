#pragma once

#include "value.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What the rules of operations need to check attributes and to show them.
namespace scribo::cpu {

/// Whether the numbers of a list lie where a processor may read them: the FlatBuffers verifier only
/// looks at where the list starts, not at its elements. An absent list is fine.
inline bool isAligned(const flatbuffers::Vector<std::int64_t>* list)
{
    return !list || reinterpret_cast<std::uintptr_t>(list->Data()) % alignof(std::int64_t) == 0;
}

template <class Enumeration>
bool isKnown(Enumeration value)
{
    return value >= Enumeration::MIN && value <= Enumeration::MAX;
}

/// An absent activation is none.
inline bool isKnown(const format::Activation* activation)
{
    return !activation || isKnown(activation->kind());
}

/// Whether a list of a window is as long as it must be and every number within what a picture can need.
inline bool isWindowList(const flatbuffers::Vector<int>* list, std::size_t length, int smallest)
{
    constexpr int largest = 1 << 14;
    return list && list->size() == length
        && std::all_of(list->begin(), list->end(), [&](int number) { return number >= smallest && number <= largest; });
}

/// The shape of a required input, and of the first result, among those of all tensors.
inline const Shape& inputShape(const format::Operation& operation, const std::vector<Shape>& shapes, int input)
{
    return shapes[static_cast<std::size_t>(operation.inputs()->Get(static_cast<flatbuffers::uoffset_t>(input)))];
}
inline const Shape& resultShape(const format::Operation& operation, const std::vector<Shape>& shapes)
{
    return shapes[static_cast<std::size_t>(operation.outputs()->Get(0))];
}

/// "1 2 3"; empty for an absent list.
template <class List>
std::string listText(const List* list)
{
    std::string text;
    for (std::size_t i = 0; list && i < list->size(); ++i) {
        text += (i == 0 ? "" : " ") + std::to_string(list->Get(static_cast<flatbuffers::uoffset_t>(i)));
    }
    return text;
}

/// Words about attributes, joined by commas.
class Details
{
public:
    Details& add(const std::string& words)
    {
        text += (text.empty() ? "" : ", ") + words;
        return *this;
    }

    /// "what 1 2", or nothing for a list that is empty or holds only `plain`.
    template <class List>
    Details& addUnless(const char* what, const List* list, int plain)
    {
        const bool all
            = !list || std::all_of(list->begin(), list->end(), [plain](auto value) { return value == plain; });
        return all ? *this : add(std::string(what) + " " + listText(list));
    }

    /// Nothing for an activation that is absent or none.
    Details& addActivation(const format::Activation* activation);

    std::string text;
};

} // namespace scribo::cpu
