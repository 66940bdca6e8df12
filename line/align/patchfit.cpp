#include "align/patchfit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>

namespace scribo::line {

namespace {

/// In the first place that PatchLevel leaves free: the picture's pixel.
constexpr int seen = PatchLevel::turned + 1;
constexpr int used = seen + 1;

/// Steps below this, in pixels of the patch's corners, are not worth another.
constexpr double smallStep = 0.01;

/// Longer ones are beyond what the linear model knows.
constexpr double longestStep = 1.5;

/// Pixels off by more than this share of the patch's contrast, and this many grey levels, are no part of it. First a
/// wide net, since the light is not known well before the outliers are gone.
constexpr double wideShare = 1.5;
constexpr double narrowShare = 1;
constexpr double leastOutlier = 20;
/// With less of the patch left than this, the rest says nothing about the whole.
constexpr double leastLeft = 0.5;

/// Sums of the products of columns over the visible pixels.
struct Sums
{
    double of[used][PatchLevel::columns] = {};
    double covariance(int a, int b) const
    {
        return of[a][b] - of[a][PatchLevel::one] * of[b][PatchLevel::one] / count();
    }
    double count() const { return of[PatchLevel::one][PatchLevel::one]; }
};

/// Which pixels count: those that differ at most by `most` from what gain and offset make of the patch's.
struct Tolerance
{
    float gain = 1;
    float offset = 0;
    float most = std::numeric_limits<float>::infinity();

    bool takes(float value, float pixel) const { return std::abs(pixel - gain * value - offset) <= most; }
};

/// Adds up one line of the patch. The inner loop is as long as a vector of floats, and single precision is enough for
/// one line.
void addLine(
    const PatchLevel::Row* rows, const unsigned char* pixels, int from, int to, const Tolerance& tolerance, Sums& sums)
{
    float line[used][PatchLevel::columns] = {};
    for (int x = from; x < to; ++x) {
        PatchLevel::Row row = rows[x];
        row[seen] = pixels[x];
        if (!tolerance.takes(row[PatchLevel::value], row[seen])) {
            continue;
        }
        for (int a = 0; a < used; ++a) {
            for (int b = 0; b < PatchLevel::columns; ++b) {
                line[a][b] += row[a] * row[b];
            }
        }
    }
    for (int a = 0; a < used; ++a) {
        for (int b = 0; b < PatchLevel::columns; ++b) {
            sums.of[a][b] += line[a][b];
        }
    }
}

/// Where a line of source places enters and leaves 0 to `limit`, for x from `from` to `to`.
void clip(double start, double slope, double limit, double& from, double& to)
{
    if (slope == 0) {
        if (start < 0 || start > limit) {
            to = from;
        }
        return;
    }
    const double a = -start / slope;
    const double b = (limit - start) / slope;
    from = std::max(from, std::min(a, b));
    to = std::min(to, std::max(a, b));
}

Sums compare(
    const PatchLevel& patch, const cv::Mat& picture, const Placement& placement, const Tolerance& tolerance = {})
{
    const cv::Size size = patch.size();
    const cv::Matx23d cut = placement.cut(size);
    cv::Mat cutOut;
    cv::warpAffine(picture, cutOut, cut, size, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_REPLICATE);
    Sums sums;
    for (int y = 0; y < size.height; ++y) {
        double from = 0;
        double to = size.width - 1;
        clip(cut(0, 1) * y + cut(0, 2) + 0.5, cut(0, 0), picture.cols, from, to);
        clip(cut(1, 1) * y + cut(1, 2) + 0.5, cut(1, 0), picture.rows, from, to);
        if (from <= to) {
            addLine(patch.rows() + static_cast<std::ptrdiff_t>(y) * size.width, cutOut.ptr(y),
                static_cast<int>(std::ceil(from)), static_cast<int>(std::floor(to)) + 1, tolerance, sums);
        }
    }
    return sums;
}

Fit rated(const PatchLevel& patch, const Placement& placement, const Sums& sums)
{
    Fit fit{placement, 0, sums.count() / static_cast<double>(patch.size().area())};
    if (sums.count() < 2) {
        return fit;
    }
    const double ofPatch = sums.covariance(PatchLevel::value, PatchLevel::value);
    const double ofPicture = std::max(sums.covariance(seen, seen), leastContrast * leastContrast * ofPatch);
    if (ofPatch > 0) {
        fit.score = sums.covariance(PatchLevel::value, seen) / std::sqrt(ofPatch * ofPicture);
    }
    return fit;
}

/// What the light made of the patch, from all pixels that `sums` took.
Tolerance lightOf(const PatchLevel& patch, const Sums& sums, double most)
{
    const double ofPatch = sums.covariance(PatchLevel::value, PatchLevel::value);
    Tolerance light;
    light.gain = static_cast<float>(sums.covariance(PatchLevel::value, seen) / ofPatch);
    light.offset = static_cast<float>(
        (sums.of[PatchLevel::one][seen] - light.gain * sums.of[PatchLevel::one][PatchLevel::value]) / sums.count());
    light.most = static_cast<float>(std::max(leastOutlier, most * std::abs(light.gain) * patch.contrast()));
    return light;
}

/// The step that the sums ask for: right, down and turn, in the patch's own directions. Nothing when they leave it
/// open.
std::optional<cv::Vec3d> solvedStep(const Sums& sums, bool turns)
{
    const int unknowns = turns ? 5 : 4;
    cv::Mat_<double> equations(unknowns, unknowns);
    cv::Mat_<double> rightSide(unknowns, 1);
    for (int i = 0; i < unknowns; ++i) {
        for (int j = 0; j < unknowns; ++j) {
            equations(i, j) = sums.of[i][j];
        }
        rightSide(i) = sums.of[i][seen];
    }
    cv::Mat_<double> solution;
    const bool solved = cv::solve(equations, rightSide, solution, cv::DECOMP_CHOLESKY);
    const double gain = solved ? solution(PatchLevel::value) : 0;
    if (!(gain > 0)) {
        return std::nullopt;
    }
    return cv::Vec3d(solution(PatchLevel::right), solution(PatchLevel::down), turns ? solution(PatchLevel::turned) : 0)
        / gain;
}

/// The picture shows the patch moved by `step` in the patch's own directions: the placement moves the other way.
Placement moved(const Placement& from, cv::Vec3d step, double turnUnit)
{
    Placement to = from;
    to.angle -= step[2] * turnUnit;
    to.centre.x -= std::cos(to.angle) * step[0] - std::sin(to.angle) * step[1];
    to.centre.y -= std::sin(to.angle) * step[0] + std::cos(to.angle) * step[1];
    return to;
}

} // namespace

Fit fitPatch(const PatchLevel& patch, const cv::Mat& picture, const Placement& start, bool turns, int steps)
{
    Sums sums = compare(patch, picture, start);
    Fit best = rated(patch, start, sums);
    for (int i = 0; i < steps; ++i) {
        std::optional<cv::Vec3d> step = solvedStep(sums, turns);
        if (!step) {
            break;
        }
        const double length = cv::norm(*step);
        *step *= std::min(1.0, longestStep / length);
        const Placement next = moved(best.placement, *step, patch.turnUnit());
        sums = compare(patch, picture, next);
        const Fit fit = rated(patch, next, sums);
        if (fit.score <= best.score) {
            break;
        }
        best = fit;
        if (length < smallStep) {
            break;
        }
    }
    return best;
}

Fit fitWithoutOutliers(const PatchLevel& patch, const cv::Mat& picture, const Fit& start, bool turns, int steps)
{
    Placement placement = start.placement;
    Tolerance tolerance = lightOf(patch, compare(patch, picture, placement), wideShare);
    for (int i = 0; i < steps; ++i) {
        const Sums sums = compare(patch, picture, placement, tolerance);
        const std::optional<cv::Vec3d> step = solvedStep(sums, turns);
        if (!step || sums.count() < leastLeft * patch.size().area() || cv::norm(*step) > longestStep) {
            return start;
        }
        placement = moved(placement, *step, patch.turnUnit());
        tolerance = lightOf(patch, sums, narrowShare);
        if (i > 0 && cv::norm(*step) < smallStep) {
            break;
        }
    }
    return rated(patch, placement, compare(patch, picture, placement));
}

} // namespace scribo::line
