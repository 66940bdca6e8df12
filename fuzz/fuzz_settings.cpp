// The settings that a host has kept for a tool. After any bytes, the plug-in's settings can be saved and restored.

#include "parameterset.h"

#include <QJsonDocument>

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
    PluginSettings settings;
    ParameterSet parameters(settings);
    parameters.fromJson(QJsonDocument::fromJson(bytes).array());

    PluginSettings otherSettings;
    ParameterSet others(otherSettings);
    others.fromJson(parameters.toJson());
    if (others.toJson() != parameters.toJson()) {
        std::abort();
    }
    return 0;
}
