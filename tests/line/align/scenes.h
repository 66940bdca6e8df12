#pragma once

#include "align/partpose.h"

#include <QList>
#include <QRect>

#include <array>
#include <cstdint>
#include <opencv2/core/mat.hpp>

/// Drawn pictures of labelled parts on a belt, with the true pose of each.
namespace scenes {

/// The size of most pictures: 1.3 megapixels.
inline const cv::Size pictureSize(1280, 1024);

/// What is done to a picture that the lens and the light would do.
struct Disturbance
{
    double gain = 1;
    double offset = 0; ///< grey levels
    double noise = 0; ///< standard deviation in grey levels
    double blur = 0; ///< standard deviation in pixels
    bool glare = false; ///< a white spot over part of the patch
};

/// One label: its drawing follows from its seed.
class Label
{
public:
    explicit Label(std::uint64_t seed);

    /// The picture of the label where it is taught. `belt`: the seed of what is under it.
    cv::Mat taughtPicture(std::uint64_t belt) const;
    /// The label at `pose` (its score does not matter) with other labels near the edges of the picture.
    cv::Mat picture(const scribo::line::PartPose& pose, std::uint64_t belt, const Disturbance& disturbance) const;
    /// The same with something laid over the patch.
    cv::Mat coveredPicture(
        const scribo::line::PartPose& pose, std::uint64_t belt, const Disturbance& disturbance) const;

    QRect patch() const { return patchRect; }
    /// Regions to read, all over the label.
    QList<QRectF> regions() const { return regionRects; }
    QPointF pivot() const { return QRectF(patchRect).center(); }

private:
    void drawLogo(cv::Point at, std::uint64_t seed);
    void drawCode(cv::Point at, std::uint64_t seed);
    void drawBrand(cv::Point at, std::uint64_t seed);
    void drawPatchKind(int kind, cv::Point at, std::uint64_t seed);
    void text(const std::string& words, cv::Point at, double size, int thickness = 2);
    void lay(cv::Mat& picture, const cv::Mat& drawing, const scribo::line::PartPose& pose) const;

    std::uint64_t seed;
    cv::Mat drawing; ///< the label alone, twice as large as in the picture
    cv::Scalar ink;
    QRect patchRect;
    QList<QRectF> regionRects;
};

/// A belt without parts: textured, with stains or with seams.
cv::Mat belt(std::uint64_t seed);

/// Parts that are no labels: lids, boards, boxes.
cv::Mat otherParts(std::uint64_t seed, const Disturbance& disturbance);

/// A pose within the ranges, about the pivot.
scribo::line::PartPose randomPose(cv::RNG& random, QPointF pivot, double shift, double turn);
/// Light within 30 %, noise, blur, and glare in one picture of four.
Disturbance randomDisturbance(cv::RNG& random);
/// How far the region's corners are from where they truly are, in pixels.
std::array<double, 4> cornerErrors(
    const scribo::line::PartPose& found, const scribo::line::PartPose& truth, const QRectF& region);

} // namespace scenes
