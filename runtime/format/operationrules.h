#pragma once

#include "engine_generated.h"

#include <cstddef>
#include <cstdint>
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

/// Whether the numbers of a list lie where a processor may read them: the FlatBuffers verifier only
/// looks at where the list starts, not at its elements. An absent list is fine.
inline bool isAligned(const flatbuffers::Vector<std::int64_t>* list)
{
    return !list || reinterpret_cast<std::uintptr_t>(list->Data()) % alignof(std::int64_t) == 0;
}

/// Of a known kind.
Arity operationArity(OperationKind kind);

/// Whether the operation is of a known kind, its attributes are there, its lists are as long as they
/// must be, and its enumerations have values that exist. False with a sentence in `error`.
bool checkAttributes(const Operation& operation, std::string* error);

} // namespace scribo::format
