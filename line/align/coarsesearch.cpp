#include "align/coarsesearch.h"

#include "align/patchfit.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace scribo::line {

namespace {

/// Places that fit less than this are not the patch, whatever a finer look says.
constexpr float leastScore = 0.3F;
/// Candidates nearer to each other than this many pixels are one.
constexpr double samePlace = 1.6;

/// Normalised correlation of the patch with every place of `picture`.
cv::Mat correlation(const PatchLevel& patch, const cv::Mat& picture)
{
    cv::Mat pixels;
    picture.convertTo(pixels, CV_32F);
    // The patch's mean is 0, so that the mean of the place need not be taken off.
    cv::Mat scores;
    cv::matchTemplate(pixels, patch.centred(), scores, cv::TM_CCORR);

    cv::Mat sum;
    cv::Mat squares;
    cv::integral(picture, sum, squares, CV_32S, CV_64F);
    const cv::Size size = patch.size();
    const double count = size.area();
    const double ofPatch = count * patch.contrast() * patch.contrast();
    const double floor = leastContrast * leastContrast * ofPatch;
    for (int y = 0; y < scores.rows; ++y) {
        auto* score = scores.ptr<float>(y);
        const int* upper = sum.ptr<int>(y);
        const int* lower = sum.ptr<int>(y + size.height);
        const double* upperSquares = squares.ptr<double>(y);
        const double* lowerSquares = squares.ptr<double>(y + size.height);
        for (int x = 0; x < scores.cols; ++x) {
            const int end = x + size.width;
            const double mean = lower[end] - lower[x] - upper[end] + upper[x];
            const double square = lowerSquares[end] - lowerSquares[x] - upperSquares[end] + upperSquares[x];
            score[x] /= static_cast<float>(std::sqrt(ofPatch * std::max(square - mean * mean / count, floor)));
        }
    }
    return scores;
}

bool isPeak(const cv::Mat& scores, int x, int y)
{
    const float here = scores.at<float>(y, x);
    for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, scores.rows - 1); ++ny) {
        for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, scores.cols - 1); ++nx) {
            if (scores.at<float>(ny, nx) > here) {
                return false;
            }
        }
    }
    return true;
}

/// Adds the peaks at one turn: the picture is turned back about the middle of the range, so that the patch is upright.
void addPeaks(const PatchLevel& patch, const cv::Mat& picture, const cv::Rect2d& range, double angle,
    std::vector<Candidate>& candidates)
{
    const cv::Size size = patch.size();
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double reachX = 0.5 * (std::abs(cosine) * range.width + std::abs(sine) * range.height);
    const double reachY = 0.5 * (std::abs(cosine) * range.height + std::abs(sine) * range.width);
    const auto toX = static_cast<int>(std::ceil(reachX));
    const auto toY = static_cast<int>(std::ceil(reachY));

    const Placement middle{0.5 * (range.tl() + range.br()), angle};
    const cv::Size turnedSize(2 * toX + size.width, 2 * toY + size.height);
    cv::Mat upright;
    cv::warpAffine(picture, upright, middle.cut(turnedSize), turnedSize, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP,
        cv::BORDER_REPLICATE);
    const cv::Mat scores = correlation(patch, upright);
    for (int y = 0; y < scores.rows; ++y) {
        for (int x = 0; x < scores.cols; ++x) {
            const cv::Point2d offset(cosine * (x - toX) - sine * (y - toY), sine * (x - toX) + cosine * (y - toY));
            const float score = scores.at<float>(y, x);
            const bool within
                = std::abs(offset.x) <= 0.5 * range.width + 1 && std::abs(offset.y) <= 0.5 * range.height + 1;
            if (score >= leastScore && within && isPeak(scores, x, y)) {
                candidates.push_back({{middle.centre + offset, angle}, score});
            }
        }
    }
}

} // namespace

std::vector<Candidate> coarseSearch(
    const PatchLevel& patch, const cv::Mat& picture, const cv::Rect2d& range, double turn, std::size_t count)
{
    // A step of one and a half pixels at the corners: a fit starts within three quarters of one.
    const int steps = turn > 0 ? static_cast<int>(std::ceil(turn / (0.75 * patch.turnUnit()))) : 0;
    std::vector<Candidate> found;
    for (int i = -steps; i <= steps; ++i) {
        addPeaks(patch, picture, range, steps > 0 ? i * turn / steps : 0, found);
    }
    std::sort(found.begin(), found.end(), [](const Candidate& a, const Candidate& b) { return a.score > b.score; });

    std::vector<Candidate> best;
    for (const Candidate& candidate : found) {
        if (best.size() == count) {
            break;
        }
        const bool isNew = std::none_of(best.begin(), best.end(), [&candidate](const Candidate& other) {
            return cv::norm(other.placement.centre - candidate.placement.centre) < samePlace;
        });
        if (isNew) {
            best.push_back(candidate);
        }
    }
    return best;
}

} // namespace scribo::line
