#pragma once

#include <QImage>
#include <QString>

/// Writes `image` as a BMP file, with the bytes of QImage::save(path, "bmp", 100); a file of that name is
/// replaced. Returns false when it could not be written: then nothing has changed at `path`.
///
/// The file appears under its name only when it is whole. Until then its bytes stand in a hidden file of the
/// same folder, which is removed on failure. A process that is killed leaves that hidden file behind, and
/// never a part of a picture under a picture's name. The bytes are left to the operating system's cache, so a
/// power cut may still cost the pictures of the last seconds: waiting for the disk at every picture would slow
/// the writers so much that pictures are dropped in daily work.
bool writePictureFile(const QImage& image, const QString& path);
