#pragma once

#include "movement.h"
#include "rule.h"
#include "typerules.h"

#include <cstddef>
#include <limits>

/// What is known of each kind of operation: one row in the table of operationtable.h, from which the runtime and the
/// builder both work.
namespace scribo::cpu {

constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

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
    /// Where there may be several, one that nobody reads may be -1.
    std::size_t outputs = 1;

    constexpr Arity constants(std::size_t first, std::size_t end) const
    {
        Arity arity = *this;
        arity.firstConstant = first;
        arity.endConstant = end;
        return arity;
    }
    constexpr Arity gives(std::size_t most) const
    {
        Arity arity = *this;
        arity.outputs = most;
        return arity;
    }
};

/// As many inputs.
constexpr Arity takes(std::size_t inputs)
{
    return {inputs, inputs};
}
/// These inputs, and up to `most` with optional ones.
constexpr Arity takes(std::size_t required, std::size_t most)
{
    return {required, most, true};
}
/// One input or more, none of them absent.
constexpr Arity takesList()
{
    return {1, anyNumber};
}

/// A kind of operation. The first four members every kind has; the others are set where they apply.
struct OperationRow
{
    using Kind = format::OperationKind;
    using Operation = format::Operation;

    Kind kind;
    Arity arity;
    /// The type of its results.
    TypeRule type;
    /// Its results, from its inputs. The attributes are sound.
    Result<void> (*infer)(Rule& rule);

    /// Whether its lists are as long as they must be, and its enumerations have values that exist.
    bool (*soundAttributes)(const Operation& operation) = nullptr;
    /// The copies that it consists of, of a kind that only moves values.
    Result<Movement> (*movement)(const Node& node) = nullptr;
    /// The multiplications, each with its addition, that it takes by the plain mathematics of it, for tensors of
    /// `shapes`. Left out where they do not weigh beside those of convolutions and products of matrices.
    std::int64_t (*multiplyAdds)(const Operation& operation, const std::vector<Shape>& shapes) = nullptr;
    /// The attributes that differ from the plain case, in a few words: "stride 2 1, Relu".
    std::string (*details)(const Operation& operation) = nullptr;
    /// Whether the builder works it out where all inputs are constants.
    bool isFolded = false;

    constexpr OperationRow checks(bool (*sound)(const Operation&)) const
    {
        OperationRow row = *this;
        row.soundAttributes = sound;
        return row;
    }
    constexpr OperationRow moves(Result<Movement> (*describe)(const Node&)) const
    {
        OperationRow row = *this;
        row.movement = describe;
        return row;
    }
    constexpr OperationRow counts(std::int64_t (*count)(const Operation&, const std::vector<Shape>&)) const
    {
        OperationRow row = *this;
        row.multiplyAdds = count;
        return row;
    }
    constexpr OperationRow shows(std::string (*describe)(const Operation&)) const
    {
        OperationRow row = *this;
        row.details = describe;
        return row;
    }
    constexpr OperationRow folds() const
    {
        OperationRow row = *this;
        row.isFolded = true;
        return row;
    }

    bool hasSoundAttributes(const Operation& operation) const { return !soundAttributes || soundAttributes(operation); }
};

/// Of a known kind.
const OperationRow& operationRow(format::OperationKind kind);

/// OperationRow::multiplyAdds; 0 where it is left out.
std::int64_t multiplyAdds(const format::Operation& operation, const std::vector<Shape>& shapes);

/// OperationRow::details; empty where there are none.
std::string operationDetails(const format::Operation& operation);

} // namespace scribo::cpu
