#include "importer.h"

#include "evaluate.h"
#include "onnxtensor.h"
#include "resulttype.h"

#include <algorithm>

namespace scribo::builder {

namespace {

/// An engine file ends at 2 GB, and constants that are worked out on the way must not fill the memory.
constexpr std::size_t mostConstantBytes = std::size_t(1500) << 20;

bool contains(const std::vector<int>& tensors, int tensor)
{
    return std::count(tensors.begin(), tensors.end(), tensor) > 0;
}

std::string quoted(const std::string& name)
{
    return "'" + name + "'";
}

/// The extent along one axis of the input picture: a number, or -1 for a symbol.
std::int64_t declaredExtent(const onnx::TensorShapeProto& shape, int axis)
{
    const auto& dim = shape.dim(axis);
    return dim.value_case() == onnx::TensorShapeProto::Dimension::kDimValue ? dim.dim_value() : -1;
}

/// Adds the names that the nodes and outputs of `graph`, and of the branches inside it, read.
void collectReadNames(const onnx::GraphProto& graph, std::unordered_set<std::string>* names)
{
    for (const onnx::NodeProto& node : graph.node()) {
        names->insert(node.input().begin(), node.input().end());
        for (const onnx::AttributeProto& attribute : node.attribute()) {
            collectReadNames(attribute.g(), names);
        }
    }
    for (const onnx::ValueInfoProto& output : graph.output()) {
        names->insert(output.name());
    }
}

} // namespace

Importer::Importer(
    const onnx::GraphProto& graph, int operationSet, const ImportTable& table, const WidthRange& range, int openHeight)
    : graph(graph)
    , operationSet(operationSet)
    , table(table)
    , range(range)
    , openHeight(openHeight)
{
    collectReadNames(graph, &readNames);
}

Checked<std::unique_ptr<format::NetworkT>> Importer::run()
{
    importInitializers(graph);
    importInput();
    for (const onnx::NodeProto& proto : graph.node()) {
        if (constantBytes > mostConstantBytes) {
            fault("its constants take more than 1.5 GB, too much for an engine file");
            break;
        }
        importNode(OnnxNode(proto, faults));
    }
    importOutputs();
    if (!faults.empty()) {
        return faulty(std::move(faults));
    }
    return std::move(network);
}

void Importer::importInitializers(const onnx::GraphProto& source)
{
    if (source.sparse_initializer_size() > 0) {
        fault("the model holds sparse constants, which are not supported");
    }
    for (const onnx::TensorProto& proto : source.initializer()) {
        if (constantBytes > mostConstantBytes) {
            define(proto.name(), -1);
        } else if (Result<TensorT> constant = readTensor(proto)) {
            define(proto.name(), addTensor(std::move(*constant)));
        } else {
            fault(constant.error().message);
            define(proto.name(), -1);
        }
    }
}

void Importer::importInput()
{
    std::vector<const onnx::ValueInfoProto*> inputs;
    for (const onnx::ValueInfoProto& input : graph.input()) {
        // Up to IR version 3 the constants are listed among the inputs as well.
        if (tensors.count(input.name()) == 0) {
            inputs.push_back(&input);
        }
    }
    for (const onnx::ValueInfoProto* input : inputs) {
        define(input->name(), -1);
    }
    if (inputs.size() != 1) {
        fault("the model has " + std::to_string(inputs.size()) + " inputs; exactly one, the picture, is supported");
        return;
    }
    const onnx::ValueInfoProto& input = *inputs.front();
    const std::string title = "input " + quoted(input.name()) + " ";
    const onnx::TypeProto_Tensor& type = input.type().tensor_type();
    if (!input.type().has_tensor_type() || type.elem_type() != onnx::TensorProto::FLOAT) {
        fault(title + "is not a tensor of 32-bit floats");
        return;
    }
    if (type.shape().dim_size() != 4) {
        fault(title + "has " + std::to_string(type.shape().dim_size())
            + " dimensions; batch, channels, height and width are needed");
        return;
    }
    const std::int64_t batch = declaredExtent(type.shape(), 0);
    const std::int64_t channels = declaredExtent(type.shape(), 1);
    std::int64_t height = declaredExtent(type.shape(), 2);
    if (height == -1 && openHeight > 0) {
        height = openHeight;
    } else if (openHeight > 0 && height != openHeight) {
        fault(title + "has a height of " + std::to_string(height) + ", not " + std::to_string(openHeight));
    }
    const std::int64_t width = declaredExtent(type.shape(), 3);
    // A batch that is left open is run with one picture at a time.
    if (batch != 1 && batch != -1) {
        fault(title + "has a batch of " + std::to_string(batch) + "; 1 is supported");
    }
    constexpr std::int64_t largest = 1 << 14;
    if (height == -1 && channels >= 1) {
        fault(title + "leaves the height open; say which one the model was trained with (--height)");
    } else if (channels < 1 || channels > largest || height < 1 || height > largest) {
        fault(title + "must have a fixed number of channels and a fixed height");
    }
    if (width != -1) {
        fault(title + "has a fixed width of " + std::to_string(width)
            + "; export the model with a dynamic width (dynamic_axes)");
    }
    auto tensor = TensorT();
    tensor.name = input.name();
    tensor.dims = {1, channels, height, -1};
    tensors[input.name()] = addTensor(std::move(tensor));
    network->inputs = {tensors[input.name()]};
}

bool Importer::readable(const OnnxNode& node, const ImportRule& rule) const
{
    for (int i = 0; i < node.inputCount(); ++i) {
        if (!node.input(i).empty() && tensors.count(node.input(i)) == 0) {
            node.refuse("it reads " + quoted(node.input(i)) + ", which nothing before it gives");
            return false;
        }
    }
    for (int i = 0; i < rule.fewestInputs; ++i) {
        if (node.input(i).empty()) {
            node.refuse("input " + std::to_string(i) + " is missing");
            return false;
        }
    }
    if (node.inputCount() > rule.mostInputs) {
        node.refuse("it has " + std::to_string(node.inputCount()) + " inputs; at most "
            + std::to_string(rule.mostInputs) + " are supported");
        return false;
    }
    // An input that could not be imported has been named already.
    for (int i = 0; i < node.inputCount(); ++i) {
        if (!node.input(i).empty() && tensors.at(node.input(i)) < 0) {
            return false;
        }
    }
    return true;
}

void Importer::importNode(const OnnxNode& node)
{
    const bool standard = node.domain().empty() || node.domain() == "ai.onnx";
    const auto found = table.find(node.operation());
    bool imported = false;
    if (!standard || found == table.end()) {
        const std::string operation = standard ? node.operation() : node.domain() + "." + node.operation();
        fault("operation " + quoted(operation) + " of node " + quoted(node.name()) + " is not supported");
    } else if (readable(node, found->second)) {
        const std::size_t before = faults.size();
        found->second.import(*this, node);
        imported = faults.size() == before;
    }
    if (imported) {
        node.refuseUnasked();
    }
    defineRest(node, imported);
}

void Importer::defineRest(const OnnxNode& node, bool imported)
{
    for (int i = 0; i < node.outputCount(); ++i) {
        const std::string name = node.output(i);
        if (name.empty() || tensors.count(name) > 0) {
            continue;
        }
        if (imported && readNames.count(name) > 0) {
            node.refuse("its output " + quoted(name) + " is not supported");
        }
        tensors[name] = -1;
    }
}

void Importer::importOutputs()
{
    if (graph.output_size() == 0) {
        fault("the model has no outputs");
    }
    for (const onnx::ValueInfoProto& output : graph.output()) {
        const auto found = tensors.find(output.name());
        if (found == tensors.end()) {
            fault("output " + quoted(output.name()) + " is given by no operation");
            continue;
        }
        const int index = found->second;
        if (index < 0) {
            continue;
        }
        TensorT& tensor = *network->tensors[static_cast<std::size_t>(index)];
        if (isConstant(tensor) || contains(network->inputs, index)) {
            fault("output " + quoted(output.name()) + " is not computed from the picture");
        } else if (tensor.type != format::ElementType::Float32) {
            fault("output " + quoted(output.name()) + " is not a tensor of floats");
        } else if (contains(network->outputs, index)) {
            fault("output " + quoted(output.name()) + " is the same as output " + quoted(tensor.name));
        } else {
            tensor.name = output.name();
            network->outputs.push_back(index);
        }
    }
}

int Importer::tensor(const OnnxNode& node, int position) const
{
    const std::string name = node.input(position);
    return name.empty() ? -1 : tensors.at(name);
}

const TensorT* Importer::floats(const OnnxNode& node, int position, const char* what) const
{
    const int index = tensor(node, position);
    if (index < 0) {
        return nullptr;
    }
    if (!isConstant(tensor(index)) || tensor(index).type != format::ElementType::Float32) {
        node.refuse(std::string("its ") + what + " must be constant floats");
        return nullptr;
    }
    return &tensor(index);
}

std::optional<std::vector<std::int64_t>> Importer::integers(const OnnxNode& node, int position, const char* what) const
{
    const int index = tensor(node, position);
    if (index < 0) {
        return std::nullopt;
    }
    if (!isConstant(tensor(index)) || tensor(index).type != format::ElementType::Int64) {
        node.refuse(std::string("its ") + what + " must be constant integers");
        return std::nullopt;
    }
    return integerValues(tensor(index));
}

std::optional<std::vector<std::int64_t>> Importer::listArgument(
    const OnnxNode& node, const char* attribute, int position) const
{
    if (tensor(node, position) >= 0) {
        return integers(node, position, attribute);
    }
    return node.has(attribute) ? std::optional(node.integers(attribute, {})) : std::nullopt;
}

std::optional<TensorProfile> Importer::profile(const OnnxNode& node, int index) const
{
    if (network->inputs.empty()) {
        return std::nullopt;
    }
    const Result<Profile> found = profileNetwork(*network, range);
    if (!found) {
        if (faults.empty()) {
            node.refuse("the shape of its input cannot be worked out: " + found.error().message);
        }
        return std::nullopt;
    }
    return (*found)[static_cast<std::size_t>(index)];
}

std::optional<Extents> Importer::extents(const OnnxNode& node, int index) const
{
    if (isConstant(tensor(index))) {
        return tensor(index).dims;
    }
    const std::optional<TensorProfile> known = profile(node, index);
    return known ? std::optional(known->extents) : std::nullopt;
}

std::vector<std::int64_t> Importer::fixedIntegers(const OnnxNode& node, int index) const
{
    if (tensor(index).type != format::ElementType::Int64) {
        return {};
    }
    if (isConstant(tensor(index))) {
        return integerValues(tensor(index));
    }
    const std::optional<TensorProfile> known = profile(node, index);
    return known ? known->integers : std::vector<std::int64_t>();
}

void Importer::importBranch(const OnnxNode& node, const onnx::GraphProto& branch)
{
    importInitializers(branch);
    for (const onnx::NodeProto& proto : branch.node()) {
        importNode(OnnxNode(proto, faults));
    }
    for (int i = 0; i < branch.output_size(); ++i) {
        const auto found = tensors.find(branch.output(i).name());
        if (found == tensors.end()) {
            node.refuse("output " + quoted(branch.output(i).name()) + " of its branch is given by no operation");
        } else if (found->second >= 0) {
            bind(node, i, found->second);
        }
    }
}

int Importer::addTensor(TensorT tensor)
{
    constantBytes += tensor.constant.size();
    network->tensors.push_back(std::make_unique<TensorT>(std::move(tensor)));
    return static_cast<int>(network->tensors.size()) - 1;
}

std::vector<int> Importer::add(const OnnxNode& node, format::OperationT operation, int count)
{
    operation.name = node.name();
    if (std::optional<TensorT> value = evaluate(*network, operation)) {
        return {addTensor(std::move(*value))};
    }
    const Result<format::ElementType> type = resultType(*network, operation);
    if (!type) {
        node.refuse(type.error().message);
    }
    for (int i = 0; i < count; ++i) {
        TensorT output;
        output.type = type.value_or(format::ElementType::Float32);
        operation.outputs.push_back(addTensor(std::move(output)));
    }
    std::vector<int> outputs = operation.outputs;
    if (type) {
        network->operations.push_back(std::make_unique<format::OperationT>(std::move(operation)));
    }
    return outputs;
}

void Importer::bind(const OnnxNode& node, int position, int index)
{
    const std::string name = node.output(position);
    if (name.empty()) {
        return;
    }
    define(name, index);
    TensorT& tensor = *network->tensors[static_cast<std::size_t>(index)];
    if (tensor.name.empty()) {
        tensor.name = name;
    }
}

void Importer::define(const std::string& name, int index)
{
    if (!tensors.emplace(name, index).second) {
        fault("two values of the model are called " + quoted(name));
    }
}

} // namespace scribo::builder
