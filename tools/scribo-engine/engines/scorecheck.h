#pragma once

#include <QStringList>

#include <cstddef>

namespace scribo::tool {

struct ScoreReport
{
    QStringList faults;
    QStringList warnings;
};

/// Runs the engine in `size` bytes on a picture of `width` columns. A fault for a run that the runtime refuses and
/// for scores that are not finite; a warning for scores that are not those of a soft-max, because
/// the decoder takes a score of 0.1 or less for nothing.
ScoreReport checkScores(const void* engine, std::size_t size, int width);

} // namespace scribo::tool
