#pragma once

#include "loadedengine.h"

#include <QStringList>

namespace scribo::tool {

struct ScoreReport
{
    QStringList faults;
    QStringList warnings;
};

/// Runs the engine on a picture of `width` columns. A fault for a run that the runtime refuses and
/// for scores that are not finite; a warning for scores that are not those of a soft-max, because
/// the decoder takes a score of 0.1 or less for nothing.
ScoreReport checkScores(const FileBytes& engine, int width);

} // namespace scribo::tool
