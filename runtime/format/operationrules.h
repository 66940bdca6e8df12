#pragma once

#include "engine_generated.h"

#include <cstddef>
#include <string>

/// What each kind of operation is made of, as far as it can be said without looking at shapes.
namespace scribo::format {

/// How many tensors a kind of operation takes and gives.
struct Arity
{
    std::size_t requiredInputs = 1;
    std::size_t inputs = 1;
    /// Whether an input behind the required ones may be -1.
    bool optionalInputs = false;
    /// Inputs from the first up to the end must be constants.
    std::size_t firstConstant = 0;
    std::size_t endConstant = 0;
    std::size_t outputs = 1;
    /// Whether an output that nobody reads may be -1.
    bool optionalOutputs = false;
};

/// Of a known kind.
Arity operationArity(OperationKind kind);

/// Whether the operation is of a known kind, its attributes are there, its lists are as long as they
/// must be, and its enumerations have values that exist. False with a sentence in `error`.
bool checkAttributes(const Operation& operation, std::string* error);

} // namespace scribo::format
