#include "widthcheck.h"

#include "graph/shapes.h"

#include <functional>
#include <numeric>

namespace scribo::tool {

namespace {

std::vector<std::int64_t> outputSizes(const format::Network& network, int width)
{
    const Result<std::vector<cpu::Shape>> shapes = cpu::inferShapes(network, width);
    std::vector<std::int64_t> sizes;
    if (!shapes) {
        return sizes;
    }
    for (int output : *network.outputs()) {
        const cpu::Shape& shape = (*shapes)[static_cast<std::size_t>(output)];
        sizes.push_back(std::accumulate(shape.begin(), shape.end(), std::int64_t(1), std::multiplies<>()));
    }
    return sizes;
}

} // namespace

QStringList outgrownBuffers(const format::Network& network, int narrowest, int widest)
{
    QStringList faults;
    const std::vector<std::int64_t> room = outputSizes(network, widest);
    for (int width = narrowest; width < widest && faults.isEmpty(); ++width) {
        const std::vector<std::int64_t> sizes = outputSizes(network, width);
        if (sizes.size() != room.size()) {
            faults << QStringLiteral("the shapes at width %1 cannot be worked out").arg(width);
            continue;
        }
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            if (sizes[i] > room[i]) {
                faults << QStringLiteral("output %1 is larger at width %2 than at width %3, which buffers are made for")
                              .arg(i)
                              .arg(width)
                              .arg(widest);
            }
        }
    }
    return faults;
}

} // namespace scribo::tool
