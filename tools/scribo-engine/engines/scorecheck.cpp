#include "scorecheck.h"

#include "enginerunner.h"
#include "modellimits.h"
#include "resulttext.h"

#include <algorithm>
#include <cmath>

namespace scribo::tool {

namespace {

/// Whether every row of scores lies within 0 to 1 and adds up to 1.
bool softmaxRows(const std::vector<float>& scores, std::size_t classes)
{
    constexpr double tolerance = 1e-3;
    for (std::size_t row = 0; row + classes <= scores.size(); row += classes) {
        double sum = 0;
        for (std::size_t i = row; i < row + classes; ++i) {
            if (scores[i] < -tolerance || scores[i] > 1 + tolerance) {
                return false;
            }
            sum += static_cast<double>(scores[i]);
        }
        if (std::fabs(sum - 1) > tolerance) {
            return false;
        }
    }
    return true;
}

} // namespace

ScoreReport checkScores(const void* engine, std::size_t size, int width)
{
    ScoreReport report;
    EngineRunner runner;
    const auto outputs
        = runner.load(engine, size).and_then([&] { return runner.run(width, testPicture(runner.pictureSize(width))); });
    if (!outputs) {
        report.faults << QStringLiteral("a trial run at width %1 failed: %2").arg(width).arg(textOf(outputs.error()));
        return report;
    }
    for (const RunOutput& output : *outputs) {
        const bool finite
            = std::all_of(output.values.begin(), output.values.end(), [](float score) { return std::isfinite(score); });
        if (!finite) {
            report.faults << QStringLiteral("a trial run at width %1 gives scores that are not finite").arg(width);
        } else if (!output.extents.empty()
            && !softmaxRows(output.values, static_cast<std::size_t>(output.extents.back()))) {
            report.warnings << QStringLiteral(
                "at width %1 the scores are not those of a soft-max (0 to 1, adding up to "
                "1 in each step); scores of %2 or less read as nothing")
                                   .arg(width)
                                   .arg(modellimits::scoreFloor);
        }
    }
    return report;
}

} // namespace scribo::tool
