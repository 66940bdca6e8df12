#include "testpictures.h"

#include <QDir>
#include <QFile>

#include <opencv2/core.hpp>

cv::Mat numberedPicture(int number, cv::Size size)
{
    cv::Mat picture(size, CV_8UC1);
    cv::RNG random(static_cast<std::uint64_t>(number) + 1);
    random.fill(picture, cv::RNG::UNIFORM, 0, 256);
    for (int byte = 0; byte < 4; ++byte) {
        picture.at<uchar>(0, byte) = static_cast<uchar>(number >> (8 * byte));
    }
    return picture;
}

int pictureNumber(const cv::Mat& picture)
{
    int number = 0;
    for (int byte = 0; byte < 4; ++byte) {
        number |= picture.at<uchar>(0, byte) << (8 * byte);
    }
    return number;
}

bool fileShows(const QString& path, const cv::Mat& picture)
{
    const QImage image(path, "bmp");
    if (image.isNull() || image.width() != picture.cols || image.height() != picture.rows) {
        return false;
    }
    const int channels = picture.channels();
    for (int y = 0; y < picture.rows; ++y) {
        for (int x = 0; x < picture.cols; ++x) {
            const uchar* const pixel = picture.ptr(y, x);
            const QRgb expected = channels == 3 ? qRgb(pixel[0], pixel[1], pixel[2]) : qRgb(*pixel, *pixel, *pixel);
            if (image.pixel(x, y) != expected) {
                return false;
            }
        }
    }
    return true;
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

void fillFolder(const QString& folder, int count)
{
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        QFile file(folder + QStringLiteral("/old%1").arg(i));
        file.open(QIODevice::WriteOnly);
    }
}

SOrgAI_ResInfo okRecord(const std::string& text)
{
    SOrgAI_ResInfo record;
    record.text = text;
    record.isOk = true;
    return record;
}

SOrgAI_ResInfo ngRecord(int classIndex, const std::string& text)
{
    SOrgAI_ResInfo record;
    record.classIndex = classIndex;
    record.text = text;
    return record;
}
