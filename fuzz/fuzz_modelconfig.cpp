// The configuration file of a model package: any bytes give a configuration or a message, never a crash.

#include "modelconfig.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Qt 5.15's own parser leaks a value when an object names the same key twice.
extern "C" const char* __asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    ModelConfig config;
    const auto parsed = parseModelConfig(bytes, QStringLiteral("fuzzed.json"), &config);
    const bool masksFit
        = config.detector.mask.empty() || config.detector.mask.size() == config.detector.output_layers.size();
    const bool toldWhy = parsed || !parsed.error().message.empty();
    if (!toldWhy || (parsed && !(config.hasClassAndInputSize() && masksFit))
        || static_cast<std::size_t>(config.detector.classNum) != config.classes.size()) {
        std::abort();
    }
    return 0;
}
