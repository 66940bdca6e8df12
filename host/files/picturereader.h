#pragma once

#include "result.h"

#include <QString>

#include <opencv2/core/mat.hpp>

namespace scribo::host {

/// Reads a picture file of any format that OpenCV knows into what Tool::image() hands over: 8 bits, one
/// channel (grey) or three (red, green, blue).
///
/// 16-bit samples are scaled by 1/257, so that full scale stays full scale whatever the picture shows;
/// transparent pictures are laid on white. A picture of other samples (floating point, for one) is refused:
/// no scale would be right for all of them. The error is the reason alone, without the path. Never throws.
Result<cv::Mat> readPicture(const QString& path);

} // namespace scribo::host
