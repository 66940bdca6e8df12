#pragma once

#include "networkedit.h"

#include <optional>

namespace scribo::builder {

/// y = x * scale + shift.
struct ScalarAffine
{
    double scale = 1;
    double shift = 0;
};

/// What a sum, difference, product or quotient with the number `constant` does to the data in input
/// `position`; nothing for other operations, and for a quotient that is not defined.
std::optional<ScalarAffine> scalarAffine(format::BinaryKind kind, std::size_t position, double constant);

/// The same for an operation of which one input is a constant without axes; `position` becomes that
/// of the other input.
std::optional<ScalarAffine> scalarAffine(const NetworkT& network, const OperationT& operation, std::size_t* position);

} // namespace scribo::builder
