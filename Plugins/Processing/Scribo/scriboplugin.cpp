// What the library does when it is loaded. The entry points themselves come with the class Scribo.

#include <QFont>

#include <cstdint>

/// Tells a laptop's NVIDIA driver to run the process on the discrete GPU.
extern "C" Q_DECL_EXPORT std::uint32_t NvOptimusEnablementCuda;
std::uint32_t NvOptimusEnablementCuda = 1;

namespace {

// The two fonts of the stations' operator view. Nothing in the plug-in draws with them.
const QFont titleFont(QStringLiteral("Microsoft YaHei"), 14);
const QFont textFont(QStringLiteral("Microsoft YaHei"), 14);

} // namespace
