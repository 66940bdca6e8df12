#pragma once

#include "engine_generated.h"

#include <cstddef>

/// Tables with a row for each kind of operation. A row has a member `kind`.
namespace scribo::format {

/// Whether `rows` has one row for every kind, in the order of the schema. For a static_assert beside the table: a kind
/// that is forgotten must not compile.
template <class Row, std::size_t count>
constexpr bool coversEveryKind(const Row (&rows)[count])
{
    if (count != static_cast<std::size_t>(OperationKind::MAX)) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (rows[i].kind != static_cast<OperationKind>(i + 1)) {
            return false;
        }
    }
    return true;
}

/// The row of a known kind in a table that covers every kind.
template <class Row, std::size_t count>
constexpr const Row& rowOf(const Row (&rows)[count], OperationKind kind)
{
    return rows[static_cast<std::size_t>(kind) - 1];
}

} // namespace scribo::format
