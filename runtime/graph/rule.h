#pragma once

#include "result.h"
#include "value.h"

#include <initializer_list>
#include <utility>
#include <vector>

namespace scribo::cpu {

/// An operation and what is known of its inputs. Its form has been checked: required inputs and
/// attributes are there, indices exist.
class Node
{
public:
    Node(const format::Operation& operation, const std::vector<Value>& known)
        : operation(operation)
        , known(known)
    {
    }

    const format::Operation& operation;

    std::size_t inputCount() const { return operation.inputs()->size(); }
    std::size_t outputCount() const { return operation.outputs()->size(); }

    /// Input `i`, or null when it is absent.
    const Value* input(std::size_t i) const
    {
        const int tensor = i < inputCount() ? operation.inputs()->Get(static_cast<flatbuffers::uoffset_t>(i)) : -1;
        return tensor < 0 ? nullptr : &known[static_cast<std::size_t>(tensor)];
    }
    /// A required input.
    const Value& operand(std::size_t i) const { return *input(i); }

    /// An error when one of these inputs is there and holds integers.
    Result<void> needFloats(std::initializer_list<std::size_t> inputs) const;
    /// An error when one of these inputs is there and is not integers of at most one dimension.
    Result<void> needIntegers(std::initializer_list<std::size_t> inputs) const;

private:
    const std::vector<Value>& known;
};

/// An operation while its results are worked out.
class Rule : public Node
{
public:
    Rule(const format::Operation& operation, std::vector<Value>* values)
        : Node(operation, *values)
        , values(*values)
    {
    }

    /// Result `i` is floats of `shape`. An error when that is too large or has nothing in it.
    Result<void> setFloats(std::size_t i, Shape shape, std::optional<float> uniform = std::nullopt);
    /// Result `i` is these integers.
    Result<void> setIntegers(std::size_t i, Shape shape, std::vector<std::int64_t> integers);
    /// Result `i` has the elements of `source` in another shape of as many elements.
    Result<void> setReshaped(std::size_t i, Shape shape, const Value& source);

private:
    std::vector<Value>& values;

    void set(std::size_t i, Value value);
};

} // namespace scribo::cpu
