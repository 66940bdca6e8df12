#include "align/partfinder.h"

#include "align/coarsesearch.h"
#include "align/patchfit.h"
#include "align/searcharea.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace scribo::line {

namespace {

constexpr int leastSide = 24;
/// OpenCV turns no larger pictures.
constexpr int longestSide = 32767;
constexpr int mostPixels = 10000;

/// The coarsest level: as coarse as possible while the patch has this many pixels on its shorter side and in all.
constexpr int leastCoarseSide = 10;
constexpr int leastCoarseArea = 250;
constexpr int mostLevels = 5;
/// A patch with more pixels than this is not looked at in full size: halved it is precise enough.
constexpr int mostFinePixels = 100'000;

/// Standard deviation in grey levels that a patch and each of its levels need at least.
constexpr double leastDeviation = 5;
/// And how much of the patch's own a coarse level must have kept.
constexpr double leastKept = 0.25;
/// Below these, a patch looks the same when it is shifted along a line, or when it is turned (see PatchLevel).
/// Measured: stripes up to 0.03, print from 0.5; rings up to 0.012, a square 0.14, print from 0.15.
constexpr double leastShiftHold = 0.08;
constexpr double leastTurnHold = 0.04;

/// Places that are looked at in the coarsest level, and at least in those below, each of which halves the number.
constexpr std::size_t mostCandidates = 12;
constexpr std::size_t leastCandidates = 3;
/// A candidate that scores this much less than the best one at its level is given up.
constexpr double hopeless = 0.3;
/// Two places whose scores differ by less resemble the patch about as well.
constexpr double ambiguousMargin = 0.05;
/// No other place of the taught picture may come as near to the minimum score as this.
constexpr double lookalikeMargin = 0.1;
/// What the patch must score in its own picture.
constexpr double leastOwnScore = 0.95;
/// Fits that end this near to each other, in pixels, found the same place.
constexpr double sameEnd = 3;
/// How much of the patch the picture must show, for a part to be found and for a place to count at all.
constexpr double leastVisible = 0.9;
constexpr double leastVisibleToCount = 0.6;
/// How far beyond the taught range a part may lie, in pixels and degrees: the fit is not more precise than that.
constexpr double rangeSlack = 0.5;

constexpr int coarseSteps = 6;
constexpr int fineSteps = 10;

bool isUsable(const cv::Mat& picture)
{
    return !picture.empty() && picture.dims == 2 && picture.cols <= longestSide && picture.rows <= longestSide
        && (picture.type() == CV_8UC1 || picture.type() == CV_8UC3);
}

/// Also false for what is not a number.
bool isWithin(double value, double least, double most)
{
    return value >= least && value <= most;
}

/// What is wrong with the settings; empty: nothing.
std::string fault(const AlignmentSettings& settings)
{
    if (!isWithin(settings.shiftX, 1, mostPixels) || !isWithin(settings.shiftY, 1, mostPixels)) {
        return "the shift range is not from 1 to 10000 pixels";
    }
    if (!isWithin(settings.turn, 0, AlignmentSettings::widestTurn)) {
        return "the turn range is not from 0 to 15 degrees";
    }
    if (!isWithin(settings.minimumScore, 0.3, 1)) {
        return "the minimum score is not from 0.3 to 1";
    }
    // First, since the size of a rectangle with wild corners overflows.
    const QRect& patch = settings.patch;
    if (patch.left() < 0 || patch.top() < 0 || patch.right() >= longestSide || patch.bottom() >= longestSide) {
        return "the patch does not lie in the picture";
    }
    if (patch.width() < leastSide || patch.height() < leastSide) {
        return "the patch is smaller than 24 x 24 pixels";
    }
    return {};
}

tl::unexpected<NotFound> notFound(NotFoundReason reason, const QString& message, double score = 0)
{
    return tl::unexpected<NotFound>(NotFound{reason, message, score});
}

QString number(double value)
{
    return QString::number(value, 'f', 2);
}

} // namespace

/// A place that may be the part, in pixels of level 0 of the search area (`fit`) and of the picture (`origin`).
struct PartFinder::Place
{
    Fit fit;
    cv::Point2d origin;
};

PartFinder::PartFinder(const AlignmentSettings& settings, const cv::Mat& patch)
    : taught(settings)
    , patch(greyPicture(patch).clone())
{
    buildLevels();
}

void PartFinder::buildLevels()
{
    int coarsest = 0;
    const auto fits = [this](int level) {
        const int width = patch.cols >> level;
        const int height = patch.rows >> level;
        return std::min(width, height) >= leastCoarseSide && width * height >= leastCoarseArea;
    };
    while (coarsest < mostLevels && fits(coarsest + 1)) {
        ++coarsest;
    }
    // Whole pixels of the coarsest level, from the middle, so that all levels show the same.
    const int width = patch.cols >> coarsest << coarsest;
    const int height = patch.rows >> coarsest << coarsest;
    const QPoint corner((patch.cols - width) / 2, (patch.rows - height) / 2);
    usedPatch = QRect(taught.patch.topLeft() + corner, QSize(width, height));
    const cv::Mat used = patch(cv::Rect(corner.x(), corner.y(), width, height));
    for (const cv::Mat& picture : pyramid(used, coarsest)) {
        const auto level = std::make_shared<const PatchLevel>(picture);
        // Fine structure is lost in coarse levels; what is left would be noise.
        if (levels.size() > 1 && level->contrast() < std::max(leastDeviation, leastKept * levels[0]->contrast())) {
            break;
        }
        levels.push_back(level);
    }
    const bool isLarge = levels[0]->size().area() > mostFinePixels && levels.size() > 1;
    finest = isLarge ? 1 : 0;
}

QString PartFinder::weakness() const
{
    // Noise of a camera looks like structure in full size, but not once four pixels are one.
    const PatchLevel& level = *levels[std::min<std::size_t>(1, levels.size() - 1)];
    if (level.contrast() < leastDeviation) {
        return QStringLiteral("the patch has no structure: choose one with print or edges in it");
    }
    if (level.shiftHold() < leastShiftHold) {
        return QStringLiteral(
            "the patch looks the same when it is shifted along a line: choose one with corners or print");
    }
    if (taught.turn > 0 && level.turnHold() < leastTurnHold) {
        return QStringLiteral("the patch looks the same when it is turned: choose another, or set the turn range to 0");
    }
    return {};
}

Result<PartFinder> PartFinder::restore(const cv::Mat& patchPicture, const AlignmentSettings& settings)
{
    if (!isUsable(patchPicture)) {
        return failure("the patch's picture is empty, not grey or RGB with 8 bits, or longer than 32767 pixels");
    }
    if (const std::string wrong = fault(settings); !wrong.empty()) {
        return failure(wrong);
    }
    if (patchPicture.cols != settings.patch.width() || patchPicture.rows != settings.patch.height()) {
        return failure("the patch's picture does not have the size of the taught patch");
    }
    PartFinder finder(settings, patchPicture);
    if (const QString weakness = finder.weakness(); !weakness.isEmpty()) {
        return failure(weakness.toStdString());
    }
    return finder;
}

Result<PartFinder> PartFinder::teach(const cv::Mat& picture, const AlignmentSettings& settings)
{
    if (!isUsable(picture)) {
        return failure("the taught picture is empty, not grey or RGB with 8 bits, or longer than 32767 pixels");
    }
    if (const std::string wrong = fault(settings); !wrong.empty()) {
        return failure(wrong);
    }
    if (!QRect(0, 0, picture.cols, picture.rows).contains(settings.patch)) {
        return failure("the patch does not lie in the picture");
    }
    const QRect& rect = settings.patch;
    Result<PartFinder> finder = restore(picture(cv::Rect(rect.x(), rect.y(), rect.width(), rect.height())), settings);
    if (!finder) {
        return finder;
    }
    if (const QString confusion = finder->confusion(picture); !confusion.isEmpty()) {
        return failure(confusion.toStdString());
    }
    return finder;
}

QString PartFinder::confusion(const cv::Mat& picture) const
{
    bool foundItself = false;
    for (const Place& place : places(picture)) {
        const PartPose where = pose(place);
        if (std::hypot(where.shift.x(), where.shift.y()) < 1) {
            foundItself = where.score >= leastOwnScore;
        } else if (where.score > taught.minimumScore - lookalikeMargin) {
            // It would be found when the patch is covered.
            return QStringLiteral(
                "another place within the search range looks like the patch (score %1): choose a patch "
                "that is there once")
                .arg(number(where.score));
        }
    }
    return foundItself ? QString()
                       : QStringLiteral("the patch is not found in its own picture: choose one with more structure");
}

std::vector<PartFinder::Place> PartFinder::places(const cv::Mat& picture) const
{
    const int coarsest = static_cast<int>(levels.size()) - 1;
    const double factor = 1 << coarsest;
    // One coarse pixel beyond the range: what is just outside is told from what is not there.
    const SearchArea area(picture, usedPatch, taught, factor, coarsest);
    std::vector<Place> found;
    if (area.isEmpty()) {
        return found;
    }
    const cv::Rect2d& centres = area.centreRange();
    const cv::Rect2d range(centres.tl() / factor, centres.br() / factor);
    const PatchLevel& coarse = *levels.back();
    for (const Candidate& candidate :
        coarseSearch(coarse, area.level(coarsest), range, qDegreesToRadians(taught.turn), mostCandidates)) {
        found.push_back({{candidate.placement, candidate.score, 1}, area.origin()});
    }
    for (int level = coarsest; level >= finest; --level) {
        descend(found, level, area.level(level));
    }
    return found;
}

/// Fits every place at a level of the pyramid, drops the hopeless ones and those that came to the same end as a better
/// one. What is left is handed to the level below, from the last one to full size.
void PartFinder::descend(std::vector<Place>& places, int level, const cv::Mat& picture) const
{
    const bool isLast = level == finest;
    for (Place& place : places) {
        place.fit = fitPatch(*levels[static_cast<std::size_t>(level)], picture, place.fit.placement, taught.turn > 0,
            isLast ? fineSteps : coarseSteps);
    }
    if (isLast && !places.empty()) {
        const auto best = std::max_element(
            places.begin(), places.end(), [](const Place& a, const Place& b) { return a.fit.score < b.fit.score; });
        best->fit = fitWithoutOutliers(
            *levels[static_cast<std::size_t>(level)], picture, best->fit, taught.turn > 0, fineSteps);
    }
    // Few pixels agree by chance.
    places.erase(std::remove_if(places.begin(), places.end(),
                     [](const Place& place) { return place.fit.visible < leastVisibleToCount; }),
        places.end());
    std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.fit.score > b.fit.score; });
    const std::size_t most
        = std::max(leastCandidates, mostCandidates >> (levels.size() - static_cast<std::size_t>(level)));
    std::vector<Place> kept;
    for (const Place& place : places) {
        const auto isSame = [&place, level](const Place& other) {
            return cv::norm(other.fit.placement.centre - place.fit.placement.centre) * (1 << level) < sameEnd;
        };
        if (kept.size() < most && place.fit.score >= places.front().fit.score - hopeless
            && std::none_of(kept.begin(), kept.end(), isSame)) {
            kept.push_back(place);
        }
    }
    for (Place& place : kept) {
        place.fit.placement = place.fit.placement.scaled(isLast ? 1 << finest : 2);
    }
    places = std::move(kept);
}

PartPose PartFinder::pose(const Place& place) const
{
    PartPose pose;
    pose.pivot = QRectF(usedPatch).center();
    const cv::Point2d centre = place.fit.placement.centre + place.origin;
    pose.shift = QPointF(centre.x, centre.y) - pose.pivot;
    pose.turn = qRadiansToDegrees(place.fit.placement.angle);
    pose.score = place.fit.score;
    return pose;
}

bool PartFinder::isInRange(const PartPose& pose) const
{
    return std::abs(pose.shift.x()) <= taught.shiftX + rangeSlack
        && std::abs(pose.shift.y()) <= taught.shiftY + rangeSlack && std::abs(pose.turn) <= taught.turn + rangeSlack;
}

tl::expected<PartPose, NotFound> PartFinder::find(const cv::Mat& picture) const
{
    if (!isUsable(picture)) {
        return notFound(NotFoundReason::unusablePicture,
            QStringLiteral("the picture is empty, not grey or RGB with 8 bits, or longer than 32767 pixels"));
    }
    if (picture.cols < patch.cols || picture.rows < patch.rows) {
        return notFound(
            NotFoundReason::unusablePicture, QStringLiteral("the picture is smaller than the taught patch"));
    }
    const std::vector<Place> found = places(picture);
    if (found.empty()) {
        return notFound(NotFoundReason::lowScore, QStringLiteral("nothing in the picture resembles the taught patch"));
    }
    const Place& best = found.front();
    const PartPose where = pose(best);
    if (where.score < taught.minimumScore) {
        return notFound(NotFoundReason::lowScore,
            QStringLiteral("the best place has a score of %1, the minimum is %2")
                .arg(number(where.score), number(taught.minimumScore)),
            where.score);
    }
    if (found.size() > 1 && found[1].fit.score > where.score - ambiguousMargin) {
        return notFound(NotFoundReason::ambiguous,
            QStringLiteral("two places look like the patch, with scores of %1 and %2")
                .arg(number(where.score), number(found[1].fit.score)),
            where.score);
    }
    if (best.fit.visible < leastVisible) {
        return notFound(NotFoundReason::cut,
            QStringLiteral("the picture's edge cuts the patch: %1 % of it can be seen")
                .arg(qFloor(100 * best.fit.visible)),
            where.score);
    }
    if (!isInRange(where)) {
        return notFound(NotFoundReason::outsideRange,
            QStringLiteral("the part moved by %1, %2 pixels and turned by %3 degrees, further than was taught")
                .arg(number(where.shift.x()), number(where.shift.y()), number(where.turn)),
            where.score);
    }
    return where;
}

} // namespace scribo::line
