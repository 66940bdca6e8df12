#include "network.h"

#include <algorithm>

namespace scribo::format {

bool isConstant(const Tensor& tensor)
{
    return tensor.constant()
        || (tensor.dims() && std::find(tensor.dims()->begin(), tensor.dims()->end(), 0) != tensor.dims()->end());
}

std::string operationTitle(const Operation& operation)
{
    const std::string name = operation.name() ? operation.name()->str() : std::string();
    const OperationKind kind = operation.kind_type();
    return std::string(isKnown(kind) ? EnumNameOperationKind(kind) : "operation") + " '" + name + "'";
}

} // namespace scribo::format
