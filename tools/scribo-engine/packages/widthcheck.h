#pragma once

#include "engine_generated.h"

#include <QStringList>

namespace scribo::tool {

/// The detector's buffers are as large as the outputs at the widest picture. A sentence for every
/// output that is larger at some width from `narrowest` to `widest`.
QStringList outgrownBuffers(const format::Network& network, int narrowest, int widest);

} // namespace scribo::tool
