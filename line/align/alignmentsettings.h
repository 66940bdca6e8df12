#pragma once

#include <QRect>

namespace scribo::line {

/// What a line engineer teaches about finding a part again.
struct AlignmentSettings
{
    /// The widest turn that can be taught, in degrees.
    static constexpr double widestTurn = 15;
    /// Between the scores of pictures with the part and of pictures without it; docs/alignment.md has both.
    static constexpr double defaultMinimumScore = 0.7;

    QRect patch; ///< pixels of the taught picture; at least 24 on each side
    double shiftX = 60; ///< how far the patch's centre may move to either side, in pixels; 1 to 10,000
    double shiftY = 60; ///< the same, up and down
    double turn = widestTurn; ///< how far the part may turn to either side, in degrees; 0: it does not turn
    double minimumScore = defaultMinimumScore; ///< less is "not found"; 0.3 to 1
};

} // namespace scribo::line
