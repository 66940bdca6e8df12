#include "files/picturereader.h"

#include "resulttext.h"

#include <QFile>
#include <QFileInfo>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <climits>
#include <exception>

namespace scribo::host {

namespace {

/// QFile reads nothing of a file that does not fit a QByteArray, which needs some bytes of its 2 GB for itself.
constexpr qint64 largestFile = INT_MAX - 64;

/// 65535 becomes 255.
constexpr double eightBitsPerSixteen = 1.0 / 257.0;

Result<QByteArray> readBytes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(QStringLiteral("cannot be opened: ") + file.errorString());
    }
    if (file.size() > largestFile) {
        return failure("is larger than 2 GB, the most that can be read");
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return failure(QStringLiteral("cannot be read: ") + file.errorString());
    }
    if (bytes.isEmpty()) {
        return failure("is empty");
    }
    return bytes;
}

cv::Mat decode(const QByteArray& bytes)
{
    const cv::Mat buffer(1, bytes.size(), CV_8UC1, const_cast<char*>(bytes.constData()));
    return cv::imdecode(buffer, cv::IMREAD_UNCHANGED);
}

/// Red, green and blue of a picture with an alpha channel, laid on white.
cv::Mat onWhite(const cv::Mat& bgra)
{
    cv::Mat picture(bgra.size(), CV_8UC3);
    for (int y = 0; y < bgra.rows; ++y) {
        for (int x = 0; x < bgra.cols; ++x) {
            const cv::Vec4b& from = bgra.at<cv::Vec4b>(y, x);
            cv::Vec3b& to = picture.at<cv::Vec3b>(y, x);
            for (int c = 0; c < 3; ++c) {
                to[c] = cv::saturate_cast<uchar>((from[2 - c] * from[3] + 255 * (255 - from[3])) / 255.0);
            }
        }
    }
    return picture;
}

Result<cv::Mat> convert(const cv::Mat& decoded)
{
    cv::Mat bytes = decoded;
    if (decoded.depth() == CV_16U) {
        decoded.convertTo(bytes, CV_8U, eightBitsPerSixteen);
    } else if (decoded.depth() != CV_8U) {
        return failure("has samples that are neither 8 nor 16 bits without sign");
    }
    switch (bytes.channels()) {
    case 1:
        return bytes;
    case 3: {
        cv::Mat picture;
        cv::cvtColor(bytes, picture, cv::COLOR_BGR2RGB);
        return picture;
    }
    case 4:
        return onWhite(bytes);
    default:
        return failure(QStringLiteral("has %1 channels").arg(bytes.channels()));
    }
}

} // namespace

Result<cv::Mat> readPicture(const QString& path)
{
    if (QFileInfo(path).isDir()) {
        return failure("is a folder");
    }
    const auto bytes = readBytes(path);
    if (!bytes) {
        return tl::unexpected(bytes.error());
    }
    try {
        const cv::Mat decoded = decode(*bytes);
        if (!decoded.empty()) {
            return convert(decoded);
        }
        return failure("is damaged, or not a picture in a known format");
    } catch (const std::exception& exception) {
        return failure(QStringLiteral("cannot be decoded: ") + QString::fromUtf8(exception.what()).simplified());
    }
}

} // namespace scribo::host
