#pragma once

#include "result.h"

#include "engine_generated.h"

#include <vector>

/// Of which type the results of an operation are. The rules of values (rule.h) say the same of an operation whose
/// operands are known; these need the types alone, so that a builder can use them before there are any shapes.
namespace scribo::cpu {

/// `inputs`: the types of the inputs that are there, at least one. The error says why the operation cannot work on
/// them.
using TypeRule = Result<format::ElementType> (*)(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);

/// Floats, from floats.
Result<format::ElementType> onlyFloats(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);
/// Floats, from floats as the first input; the others may be integers.
Result<format::ElementType> floatsFromFirst(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);
/// Whatever all inputs are.
Result<format::ElementType> sameForAll(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);
/// Whatever the first input is; the others may be of another type.
Result<format::ElementType> sameAsFirst(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);
/// Integers, from anything.
Result<format::ElementType> alwaysIntegers(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);
/// What the attributes say.
Result<format::ElementType> typeOfCast(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);
Result<format::ElementType> typeOfFill(
    const format::OperationKindUnion& kind, const std::vector<format::ElementType>& inputs);

} // namespace scribo::cpu
