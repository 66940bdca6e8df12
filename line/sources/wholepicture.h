#pragma once

#include <QString>

namespace scribo::line {

/// Whether a picture file ends as its format ends: false for a PNG, JPEG or BMP file that is cut off, and for one that
/// cannot be opened; true for formats whose end cannot be told. (OpenCV reads a cut JPEG file without complaint.)
bool isWholePicture(const QString& path);

} // namespace scribo::line
