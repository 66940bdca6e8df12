#pragma once

#include "onnxnode.h"
#include "tensordata.h"
#include "widthprofile.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace scribo::builder {

class Importer;

/// How nodes of one ONNX operation are imported, and how many inputs they have.
struct ImportRule
{
    void (*import)(Importer& importer, const OnnxNode& node);
    int fewestInputs;
    int mostInputs;
};
/// Rules by the names of their ONNX operations.
using ImportTable = std::map<std::string, ImportRule>;
/// For operations that take any number of inputs.
constexpr int anyNumber = 1 << 20;

/// Turns an ONNX graph into a network, node by node: each becomes the operations of the engine that
/// do the same. What depends on constants alone is worked out on the way, because many nodes take as
/// arguments what other nodes compute from constants.
///
/// The functions of operations/ use the public part; every one of them either binds the outputs of
/// its node or refuses the node.
class Importer
{
public:
    /// `openHeight` is that of the picture for a model that leaves it open, 0 where it does not. `graph` and
    /// `table` must outlive the importer.
    Importer(const onnx::GraphProto& graph, int operationSet, const ImportTable& table, const WidthRange& range,
        int openHeight);

    /// The network, or everything in the graph that cannot be imported. Called once.
    Checked<std::unique_ptr<format::NetworkT>> run();

    int opset() const { return operationSet; }

    /// The tensor that an input of `node` names; -1 where the input is left out.
    int tensor(const OnnxNode& node, int position) const;
    const TensorT& tensor(int index) const { return *network->tensors[static_cast<std::size_t>(index)]; }
    /// The constant that an input of `node` names; null where it is left out. An input that is
    /// computed is refused, as is one of another type.
    const TensorT* floats(const OnnxNode& node, int position, const char* what) const;
    std::optional<std::vector<std::int64_t>> integers(const OnnxNode& node, int position, const char* what) const;
    /// A list that newer opsets pass as input `position` and older ones as `attribute`; nothing where
    /// it is given in neither way, or refused.
    std::optional<std::vector<std::int64_t>> listArgument(
        const OnnxNode& node, const char* attribute, int position) const;
    /// The extents of a tensor that has been computed so far, -1 where the width decides. Refuses
    /// the node when they cannot be worked out. Once anything has been refused, that alone may be the
    /// reason; then nothing more is said.
    std::optional<Extents> extents(const OnnxNode& node, int index) const;

    /// The elements of an integer tensor that is the same at every width; none for others.
    std::vector<std::int64_t> fixedIntegers(const OnnxNode& node, int index) const;

    template <class Values>
    int constant(Extents dims, const Values& values)
    {
        return addTensor(makeConstant({}, std::move(dims), values));
    }
    int addTensor(TensorT tensor);

    /// Adds an operation and returns its output. An operation whose inputs are all constants is computed instead.
    template <class Kind>
    int emit(const OnnxNode& node, Kind kind, std::vector<int> inputs)
    {
        return emitAll(node, std::move(kind), std::move(inputs), 1).front();
    }
    /// The same for `count` outputs.
    template <class Kind>
    std::vector<int> emitAll(const OnnxNode& node, Kind kind, std::vector<int> inputs, int count)
    {
        format::OperationT operation;
        operation.kind.Set(std::move(kind));
        operation.inputs = std::move(inputs);
        return add(node, std::move(operation), count);
    }
    /// From here on the output of the node at `position` means this tensor.
    void bind(const OnnxNode& node, int position, int index);
    /// Imports the nodes of `branch` in place of `node`, whose outputs are those of the branch.
    void importBranch(const OnnxNode& node, const onnx::GraphProto& branch);

private:
    void importInitializers(const onnx::GraphProto& source);
    void importInput();
    void importNode(const OnnxNode& node);
    void importOutputs();
    bool readable(const OnnxNode& node, const ImportRule& rule) const;
    void defineRest(const OnnxNode& node, bool imported);
    std::optional<TensorProfile> profile(const OnnxNode& node, int index) const;
    std::vector<int> add(const OnnxNode& node, format::OperationT operation, int count);
    void define(const std::string& name, int index);
    void fault(const std::string& sentence) { faults.push_back(sentence); }

    const onnx::GraphProto& graph;
    int operationSet;
    const ImportTable& table;
    WidthRange range;
    int openHeight;
    Faults faults;
    std::unique_ptr<format::NetworkT> network = std::make_unique<format::NetworkT>();
    /// What every name of the graph stands for; -1 for an output of a node that was refused.
    std::unordered_map<std::string, int> tensors;
    std::size_t constantBytes = 0;
    /// The names that nodes and outputs of the graph read.
    std::unordered_set<std::string> readNames;
};

} // namespace scribo::builder
