#pragma once

#include <QImage>
#include <QString>

/// Writes `image` as a BMP file, with the bytes of QImage::save(path, "bmp", 100); a file of that name is
/// replaced. Returns false when it could not be written: then nothing has changed at `path`.
///
/// The file appears under its name only when it is complete. Until then its bytes are in a hidden file of the
/// same folder, which is removed on failure. A process that is killed leaves that hidden file behind, but never a part
/// of a picture under the picture's name. The operating system writes its cache to the disk later, so a power cut may
/// lose the pictures of the last seconds. Waiting for the disk after every picture would slow the writers down so much
/// that pictures are dropped in daily work.
bool writePictureFile(const QImage& image, const QString& path);
