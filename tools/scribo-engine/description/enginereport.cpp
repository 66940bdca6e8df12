#include "enginereport.h"

#include "graph/operationrow.h"
#include "graph/shapes.h"

#include <algorithm>

namespace scribo::tool {

namespace {

/// The shapes of all tensors at both ends of an engine's widths.
struct EndShapes
{
    std::vector<Shape> narrowest;
    std::vector<Shape> widest;
};

QString text(const flatbuffers::String* string)
{
    return string ? QString::fromStdString(string->str()) : QString();
}

bool isWeight(const format::Tensor& tensor)
{
    return tensor.constant() && tensor.constant()->size() > 0 && tensor.type() == format::ElementType::Float32;
}

Shape declaredShape(const format::Tensor& tensor)
{
    return tensor.dims() ? Shape(tensor.dims()->begin(), tensor.dims()->end()) : Shape();
}

BindingReport describeBinding(const format::Network& network, int index, bool isInput, const EndShapes& shapes)
{
    const format::Tensor& tensor = *network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(index));
    const auto at = static_cast<std::size_t>(index);
    return {text(tensor.name()), isInput, declaredShape(tensor), shapes.narrowest[at], shapes.widest[at]};
}

OperationReport describeOperation(
    const format::Network& network, const format::Operation& operation, const EndShapes& shapes)
{
    OperationReport report;
    report.kind = QString::fromLatin1(format::EnumNameOperationKind(operation.kind_type()));
    report.name = text(operation.name());
    report.details = QString::fromStdString(cpu::operationDetails(operation));
    for (int input : *operation.inputs()) {
        if (input < 0) {
            continue;
        }
        const format::Tensor& tensor = *network.tensors()->Get(static_cast<flatbuffers::uoffset_t>(input));
        if (isWeight(tensor)) {
            report.weights.push_back(declaredShape(tensor));
        }
    }
    const auto read = std::find_if(
        operation.outputs()->begin(), operation.outputs()->end(), [](int output) { return output >= 0; });
    if (read != operation.outputs()->end()) {
        report.narrowest = shapes.narrowest[static_cast<std::size_t>(*read)];
        report.widest = shapes.widest[static_cast<std::size_t>(*read)];
    }
    report.multiplyAddsNarrowest = cpu::multiplyAdds(operation, shapes.narrowest);
    report.multiplyAddsWidest = cpu::multiplyAdds(operation, shapes.widest);
    return report;
}

Result<EndShapes> inferEnds(const format::Network& network)
{
    return cpu::inferShapes(network, network.minimum_width()).and_then([&](std::vector<Shape> narrowest) {
        return cpu::inferShapes(network, network.maximum_width()).map([&](std::vector<Shape> widest) {
            return EndShapes{std::move(narrowest), std::move(widest)};
        });
    });
}

} // namespace

Result<EngineReport> describeEngine(const format::Network& network)
{
    const Result<EndShapes> found = inferEnds(network);
    if (!found) {
        return tl::unexpected<Error>(found.error());
    }
    const EndShapes& shapes = *found;
    EngineReport report;
    report.builder = text(network.builder());
    report.source = text(network.source());
    report.minimumWidth = network.minimum_width();
    report.maximumWidth = network.maximum_width();
    for (int input : *network.inputs()) {
        report.bindings.push_back(describeBinding(network, input, true, shapes));
    }
    for (int output : *network.outputs()) {
        report.bindings.push_back(describeBinding(network, output, false, shapes));
    }
    for (const format::Operation* operation : *network.operations()) {
        report.operations.push_back(describeOperation(network, *operation, shapes));
        report.multiplyAddsNarrowest += report.operations.back().multiplyAddsNarrowest;
        report.multiplyAddsWidest += report.operations.back().multiplyAddsWidest;
    }
    for (const format::Tensor* tensor : *network.tensors()) {
        if (isWeight(*tensor)) {
            report.weightCount += static_cast<std::int64_t>(tensor->constant()->size() / sizeof(float));
        }
    }
    return report;
}

} // namespace scribo::tool
