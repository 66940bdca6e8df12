#include "pictureimage.h"

namespace scribo::host {

QImage pictureImage(const cv::Mat& picture)
{
    if (picture.empty()) {
        return {};
    }
    const uchar* const pixels = picture.data; // constant, so that QImage copies them before it writes
    const auto format = picture.channels() == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB888;
    return QImage(pixels, picture.cols, picture.rows, static_cast<int>(picture.step), format)
        .convertToFormat(QImage::Format_RGB32);
}

} // namespace scribo::host
