#pragma once

#include "align/alignmentsettings.h"
#include "align/partpose.h"
#include "align/patchlevel.h"
#include "result.h"

#include <QString>

#include <memory>
#include <opencv2/core/mat.hpp>
#include <tl/expected.hpp>
#include <vector>

namespace scribo::line {

/// Why the part was not found.
enum class NotFoundReason {
    unusablePicture, ///< empty, not 8 bits grey or red, green, blue, too large, or smaller than the patch
    lowScore, ///< nothing resembles the patch well enough
    ambiguous, ///< two places resemble it about as well
    outsideRange, ///< it is there, but it moved or turned further than was taught
    cut, ///< it is there, but the picture's edge cuts it
};

/// A part that was not found: what kind of reason, and one sentence for a person without a full stop at its end.
struct NotFound
{
    NotFoundReason reason = NotFoundReason::lowScore;
    QString message;
    double bestScore = 0; ///< of the best place, 0 when there is none
};

/// Finds a part again by a patch of it that was taught: at each level of an image pyramid, from coarse to fine,
/// by normalised correlation. Never changes once taught: it may be copied, and find() may run on any threads at once.
class PartFinder
{
public:
    /// Learns the patch `settings.patch` of `picture` (8 bits, grey or red, green, blue). Fails, in plain words, when a
    /// setting is out of its limits, when the patch lies outside the picture, is too small or has too little structure
    /// to be found again, and when it is found at more than one place of `picture` itself.
    static Result<PartFinder> teach(const cv::Mat& picture, const AlignmentSettings& settings);

    /// The same finder again, from what a job keeps: patchPicture() and settings(). All checks but the last are made.
    static Result<PartFinder> restore(const cv::Mat& patchPicture, const AlignmentSettings& settings);

    /// Looks for the part in a picture of the kind of the taught one.
    tl::expected<PartPose, NotFound> find(const cv::Mat& picture) const;

    const AlignmentSettings& settings() const { return taught; }
    /// The taught patch, 8 bits, grey. Not to be written to.
    const cv::Mat& patchPicture() const { return patch; }

private:
    struct Place;

    PartFinder(const AlignmentSettings& settings, const cv::Mat& patch);
    void buildLevels();
    QString weakness() const;
    QString confusion(const cv::Mat& picture) const;
    std::vector<Place> places(const cv::Mat& picture) const;
    void descend(std::vector<Place>& places, int level, const cv::Mat& picture) const;
    PartPose pose(const Place& place) const;
    bool isInRange(const PartPose& pose) const;

    AlignmentSettings taught;
    cv::Mat patch;
    QRect usedPatch; ///< the patch without the rows and columns that do not fill a pixel of the coarsest level
    std::vector<std::shared_ptr<const PatchLevel>> levels; ///< from full size on
    int finest = 0; ///< the last level that is fitted
};

} // namespace scribo::line
