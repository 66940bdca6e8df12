#include "attributes.h"

#include <charconv>

namespace scribo::cpu {

namespace {

/// Up to six digits, the same in every locale.
std::string numberText(float number)
{
    char text[32];
    const std::to_chars_result end
        = std::to_chars(text, text + sizeof(text), static_cast<double>(number), std::chars_format::general, 6);
    return std::string(text, end.ptr);
}

} // namespace

Details& Details::addActivation(const format::Activation* activation)
{
    if (!activation || activation->kind() == format::ActivationKind::None) {
        return *this;
    }
    add(format::EnumNameActivationKind(activation->kind()));
    if (activation->scale() != 1 || activation->shift() != 0) {
        add("times " + numberText(activation->scale()) + " plus " + numberText(activation->shift()));
    }
    return *this;
}

} // namespace scribo::cpu
