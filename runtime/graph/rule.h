#pragma once

#include "value.h"

#include <string>
#include <utility>
#include <vector>

namespace scribo::cpu {

/// An operation and what is known of its inputs. Its form has been checked: required inputs and
/// attributes are there, indices exist.
class Node
{
public:
    Node(const format::Operation& node, const std::vector<Value>& all)
        : operation(node)
        , known(all)
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

    /// Whether input `i` is floats; says so when it is not.
    bool needFloats(std::size_t i = 0);
    /// Whether input `i`, when it is there, is integers of at most one dimension.
    bool needIntegers(std::size_t i);

    /// Keeps the reason why the operation cannot be run, and is false.
    bool fail(const std::string& reason)
    {
        error = reason;
        return false;
    }

    std::string error;

private:
    const std::vector<Value>& known;
};

/// An operation while its results are worked out.
class Rule : public Node
{
public:
    Rule(const format::Operation& node, std::vector<Value>* all)
        : Node(node, *all)
        , values(*all)
    {
    }

    /// Result `i` is floats of `shape`. False when that is too large or has nothing in it.
    bool setFloats(std::size_t i, Shape shape, std::optional<float> uniform = std::nullopt);
    /// Result `i` is these integers.
    bool setIntegers(std::size_t i, Shape shape, std::vector<std::int64_t> integers);
    /// Result `i` has the elements of `source` in another shape of as many elements.
    bool setReshaped(std::size_t i, Shape shape, const Value& source);

private:
    std::vector<Value>& values;

    void set(std::size_t i, Value value);
};

} // namespace scribo::cpu
