#include "typerules.h"

#include <algorithm>

namespace scribo::cpu {

using format::ElementType;
using format::OperationKindUnion;
using Types = std::vector<ElementType>;

Result<ElementType> onlyFloats(const OperationKindUnion& kind, const Types& inputs)
{
    return sameForAll(kind, inputs).and_then([&](ElementType) { return floatsFromFirst(kind, inputs); });
}

Result<ElementType> floatsFromFirst(const OperationKindUnion&, const Types& inputs)
{
    if (inputs.front() != ElementType::Float32) {
        return failure("it is supported on floats only");
    }
    return ElementType::Float32;
}

Result<ElementType> sameForAll(const OperationKindUnion&, const Types& inputs)
{
    if (std::count(inputs.begin(), inputs.end(), inputs.front()) != static_cast<std::ptrdiff_t>(inputs.size())) {
        return failure("its inputs are of different types");
    }
    return inputs.front();
}

Result<ElementType> sameAsFirst(const OperationKindUnion&, const Types& inputs)
{
    return inputs.front();
}

Result<ElementType> alwaysIntegers(const OperationKindUnion&, const Types&)
{
    return ElementType::Int64;
}

Result<ElementType> typeOfCast(const OperationKindUnion& kind, const Types&)
{
    return kind.AsCast()->to;
}

Result<ElementType> typeOfFill(const OperationKindUnion& kind, const Types&)
{
    return kind.AsFill()->type;
}

} // namespace scribo::cpu
