#include "resulttype.h"

#include "graph/operationrow.h"

namespace scribo::builder {

Result<format::ElementType> resultType(const format::NetworkT& network, const format::OperationT& operation)
{
    std::vector<format::ElementType> inputs;
    for (int index : operation.inputs) {
        if (index >= 0) {
            inputs.push_back(network.tensors[static_cast<std::size_t>(index)]->type);
        }
    }
    return cpu::operationRow(operation.kind.type).type(operation.kind, inputs);
}

} // namespace scribo::builder
