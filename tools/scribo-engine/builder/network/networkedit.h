#pragma once

#include "engine_generated.h"

#include <functional>
#include <set>
#include <vector>

/// What the passes over a network share.
namespace scribo::builder {

using format::NetworkT;
using format::OperationT;

/// Who writes and who reads every tensor of a network. Valid until the network is changed.
class Uses
{
public:
    explicit Uses(NetworkT& network);

    /// The operation that writes `tensor`; null for constants, the input and -1.
    OperationT* producer(int tensor) const;
    /// How many inputs of operations, and outputs of the network, read `tensor`.
    int readers(int tensor) const;
    /// The operation that writes `tensor` when it is of this kind and nobody else reads the tensor,
    /// so that it may be merged into its only reader; null otherwise.
    OperationT* soleProducer(int tensor, format::OperationKind kind) const;

private:
    std::vector<OperationT*> producers;
    std::vector<int> readerCounts;
};

/// The constant behind `tensor`; null when it is computed or left out (-1).
const format::TensorT* constantAt(const NetworkT& network, int tensor);

/// Adds a tensor and returns its index.
int addTensor(NetworkT& network, format::TensorT tensor);

/// Makes everything that reads `from` read `to`. An output keeps its name. Returns false and does nothing when `from`
/// is an output and `to` cannot be one, because it is an input, a constant or another output.
bool redirect(NetworkT& network, int from, int to);

/// Removes the operations for which `unwanted` returns true.
void removeOperations(NetworkT& network, const std::function<bool(const OperationT&)>& unwanted);

/// Operations whose work others have taken over. They stay in the network until remove(), but read nothing any more.
class AbsorbedOperations
{
public:
    void add(OperationT& operation);
    /// Removes them from `network`. Returns whether there were any.
    bool remove(NetworkT& network) const;

private:
    std::set<const OperationT*> operations;
};

} // namespace scribo::builder
