#include "enginereader.h"

#include "networkcheck.h"

#include "format/enginefile.h"

namespace scribo::cpu {

Result<const format::Network*> readEngine(const void* bytes, std::size_t size)
{
    return format::openEngine(bytes, size).and_then([](const format::Network* network) {
        return checkNetwork(*network).and_then([network]() -> Result<const format::Network*> {
            if (!format::constantsAligned(*network)) {
                return failure("the constants in the engine file are not aligned");
            }
            return network;
        });
    });
}

} // namespace scribo::cpu
