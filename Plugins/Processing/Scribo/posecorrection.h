#pragma once

#include <opencv2/core/mat.hpp>
#include <opencv2/core/types.hpp>

#include <optional>

struct PosePair;

/// Whether the pose tells where the part is: all its numbers, and the motion that they describe, are finite.
bool isFinite(const PosePair& pose);

/// The image of a region that follows the part: `region`, taught on the part in its taught pose, cut
/// from `picture` where the part is now and turned upright, in the size of the region. The pose must be finite.
///
/// Nothing when the upright region is to be read instead: all four corners of the moved region lie inside the picture
/// on pixels whose first byte is not 0. Nothing for an empty picture, too. Pixels outside the picture read 0.
std::optional<cv::Mat> correctedRegion(const cv::Mat& picture, const PosePair& pose, const cv::Rect& region);
