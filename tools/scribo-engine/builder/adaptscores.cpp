#include "adapt.h"
#include "networkedit.h"

#include <algorithm>
#include <numeric>

namespace scribo::builder {

namespace {

constexpr int classAxis = 2;

/// Where the axes of the scores come from: a permutation to steps, batch, classes; nothing for a
/// layout that is not made of these three.
std::optional<std::vector<int>> permutation(const std::string& layout)
{
    std::string letters = layout;
    std::sort(letters.begin(), letters.end());
    if (letters != "knt") {
        return std::nullopt;
    }
    std::vector<int> order;
    for (char axis : {'t', 'n', 'k'}) {
        order.push_back(static_cast<int>(layout.find(axis)));
    }
    return order;
}

bool isDefault(const ScoreOptions& options)
{
    return options.layout == "tnk" && !options.blankLast && !options.needsSoftmax;
}

/// Adds operations behind an output, which stays the output under its name.
class OutputEnd
{
public:
    OutputEnd(NetworkT& network, int& output)
        : network(network)
        , output(output)
    {
    }

    template <class Kind>
    void append(Kind kind, std::vector<int> moreInputs = {})
    {
        TensorT result;
        std::swap(result.name, network.tensors[static_cast<std::size_t>(output)]->name);
        auto operation = std::make_unique<OperationT>();
        operation->name = result.name;
        operation->inputs = std::move(moreInputs);
        operation->inputs.insert(operation->inputs.begin(), output);
        output = addTensor(network, std::move(result));
        operation->outputs = {output};
        operation->kind.Set(std::move(kind));
        network.operations.push_back(std::move(operation));
    }

private:
    NetworkT& network;
    int& output;
};

/// The class numbers with the last one, the blank, in front.
TensorT blankFirst(std::int64_t classes)
{
    std::vector<std::int64_t> order(static_cast<std::size_t>(classes));
    std::iota(order.begin() + 1, order.end(), 0);
    order.front() = classes - 1;
    return makeConstant({}, {classes}, order);
}

} // namespace

Checked<void> adaptScores(NetworkT& network, const ScoreOptions& options, const WidthRange& widths)
{
    if (isDefault(options)) {
        return {};
    }
    const auto order = permutation(options.layout);
    if (!order) {
        return faulty(Faults{"layout '" + options.layout + "' is not made of t (steps), n (batch) and k (classes)"});
    }
    const Result<Profile> profile = profileNetwork(network, widths);
    if (!profile) {
        return faulty(profile.error());
    }
    Faults faults;
    for (int& output : network.outputs) {
        const std::string title = "output '" + network.tensors[static_cast<std::size_t>(output)]->name + "' ";
        const Extents extents = (*profile)[static_cast<std::size_t>(output)].extents;
        if (extents.size() != order->size()) {
            faults.push_back(
                title + "has " + std::to_string(extents.size()) + " dimensions; steps, batch and classes are three");
            continue;
        }
        const std::int64_t classes = extents[static_cast<std::size_t>((*order)[classAxis])];
        if (classes < 1) {
            faults.push_back(title + "has a number of classes that depends on the width");
            continue;
        }
        OutputEnd end(network, output);
        format::TransposeT transpose;
        transpose.permutation = *order;
        end.append(transpose);
        if (options.blankLast) {
            format::GatherT gather;
            gather.axis = classAxis;
            end.append(gather, {addTensor(network, blankFirst(classes))});
        }
        if (options.needsSoftmax) {
            end.append(format::SoftmaxT());
        }
    }
    if (!faults.empty()) {
        return faulty(std::move(faults));
    }
    return {};
}

} // namespace scribo::builder
