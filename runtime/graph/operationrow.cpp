#include "operationrow.h"

#include "operationtable.h"

namespace scribo::cpu {

const OperationRow& operationRow(format::OperationKind kind)
{
    return format::rowOf(operationTable, kind);
}

std::int64_t multiplyAdds(const format::Operation& operation, const std::vector<Shape>& shapes)
{
    const OperationRow& row = operationRow(operation.kind_type());
    return row.multiplyAdds ? row.multiplyAdds(operation, shapes) : 0;
}

std::string operationDetails(const format::Operation& operation)
{
    const OperationRow& row = operationRow(operation.kind_type());
    return row.details ? row.details(operation) : std::string();
}

} // namespace scribo::cpu
