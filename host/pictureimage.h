#pragma once

#include <QImage>

#include <opencv2/core/mat.hpp>

namespace scribo::host {

/// A picture as Qt shows it and paints on it: a copy in 32 bits (QImage::Format_RGB32). `picture`: 8 bits, one channel
/// or three (red, green, blue). Null when the picture is empty.
QImage pictureImage(const cv::Mat& picture);

} // namespace scribo::host
