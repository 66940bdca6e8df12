#include "scribo.h"

#include "qtlogcapture.h"

#include <opencv2/imgproc.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::IsEmpty;

void expectOneLine(QtLogCapture& log, const char* text)
{
    const std::vector<QtLogCapture::Line> lines = log.take();
    ASSERT_THAT(lines, testing::ElementsAre(QtLogCapture::Line{QtDebugMsg, text, "", ""}));
    EXPECT_EQ(lines[0].file, "scribo.cpp");
    EXPECT_EQ(lines[0].function, "static QImage Scribo::cvMat2QImage(const cv::Mat&)");
}

cv::Mat noise(int width, int height, int type)
{
    cv::Mat mat(height, width, type);
    cv::theRNG().fill(mat, cv::RNG::UNIFORM, 0, 256);
    return mat;
}

/// Whole pictures of widths that need padding in Qt, and parts of larger ones, whose rows are apart.
std::vector<cv::Mat> shapes(int type)
{
    std::vector<cv::Mat> mats;
    for (const int width : {1, 2, 3, 4, 5, 17, 100, 101, 102, 103}) {
        mats.push_back(noise(width, 9, type));
    }
    mats.push_back(noise(1, 1, type));
    for (const cv::Rect& part : {cv::Rect(3, 5, 31, 17), cv::Rect(0, 0, 1, 40), cv::Rect(63, 39, 1, 1)}) {
        mats.push_back(noise(64, 40, type)(part));
    }
    return mats;
}

} // namespace

TEST(ImageConversion, GreyBecomesIndexedWithAGreyTable)
{
    QtLogCapture log;
    for (const cv::Mat& mat : shapes(CV_8UC1)) {
        const QImage image = Scribo::cvMat2QImage(mat);
        ASSERT_EQ(image.format(), QImage::Format_Indexed8);
        ASSERT_EQ(image.size(), QSize(mat.cols, mat.rows));
        ASSERT_EQ(image.colorCount(), 256);
        for (int i = 0; i < 256; ++i) {
            EXPECT_EQ(image.color(i), qRgba(i, i, i, 255));
        }
        for (int y = 0; y < mat.rows; ++y) {
            for (int x = 0; x < mat.cols; ++x) {
                EXPECT_EQ(image.pixelIndex(x, y), mat.at<uchar>(y, x));
            }
        }
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ImageConversion, ThreeChannelsExchangeRedAndBlue)
{
    QtLogCapture log;
    for (const cv::Mat& mat : shapes(CV_8UC3)) {
        const QImage image = Scribo::cvMat2QImage(mat);
        ASSERT_EQ(image.format(), QImage::Format_RGB888);
        ASSERT_EQ(image.size(), QSize(mat.cols, mat.rows));
        for (int y = 0; y < mat.rows; ++y) {
            for (int x = 0; x < mat.cols; ++x) {
                const auto pixel = mat.at<cv::Vec3b>(y, x);
                EXPECT_EQ(image.pixel(x, y), qRgb(pixel[2], pixel[1], pixel[0]));
            }
        }
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ImageConversion, ABluePixelStaysBlue)
{
    EXPECT_EQ(Scribo::cvMat2QImage(cv::Mat(1, 1, CV_8UC3, cv::Scalar(255, 0, 0))).pixelColor(0, 0), QColor(Qt::blue));
}

TEST(ImageConversion, FourChannelsAreTakenAsTheyAre)
{
    for (const cv::Mat& mat : shapes(CV_8UC4)) {
        QtLogCapture log;
        const QImage image = Scribo::cvMat2QImage(mat);
        expectOneLine(log, "CV_8UC4");
        ASSERT_EQ(image.format(), QImage::Format_ARGB32);
        ASSERT_EQ(image.size(), QSize(mat.cols, mat.rows));
        for (int y = 0; y < mat.rows; ++y) {
            for (int x = 0; x < mat.cols; ++x) {
                const auto pixel = mat.at<cv::Vec4b>(y, x);
                EXPECT_EQ(image.pixel(x, y), qRgba(pixel[2], pixel[1], pixel[0], pixel[3]));
            }
        }
    }
}

TEST(ImageConversion, AnyOtherTypeGivesNoImage)
{
    for (const int type : {CV_32FC1, CV_16UC1, CV_8SC1, CV_8UC2, CV_64FC3, CV_16UC3, CV_8UC(5)}) {
        QtLogCapture log;
        EXPECT_TRUE(Scribo::cvMat2QImage(cv::Mat::zeros(3, 4, type)).isNull()) << type;
        expectOneLine(log, "ERROR: Mat could not be converted to QImage.");
    }
}

TEST(ImageConversion, AnEmptyMatrixGivesNoImage)
{
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
        EXPECT_TRUE(Scribo::cvMat2QImage(cv::Mat(0, 0, type)).isNull());
        EXPECT_TRUE(Scribo::cvMat2QImage(cv::Mat(0, 5, type)).isNull());
        EXPECT_TRUE(Scribo::cvMat2QImage(cv::Mat(5, 0, type)).isNull());
    }
    EXPECT_TRUE(Scribo::cvMat2QImage(cv::Mat()).isNull());
}

TEST(ImageConversion, AMatrixOfThreeDimensionsGivesNoImage)
{
    const int sizes[] = {2, 3, 4};
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
        EXPECT_TRUE(Scribo::cvMat2QImage(cv::Mat(3, sizes, type, cv::Scalar(0))).isNull());
    }
}

TEST(ImageConversion, TheImageOwnsItsPixelsAndLeavesTheMatrixAlone)
{
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
        cv::Mat mat = noise(16, 8, type); // rows that need no padding in Qt
        const cv::Mat before = mat.clone();
        const QImage image = Scribo::cvMat2QImage(mat);
        EXPECT_EQ(cv::norm(mat, before, cv::NORM_INF), 0) << type;
        const QImage copy = image.copy();
        mat.setTo(cv::Scalar::all(77));
        EXPECT_EQ(image, copy) << type;
        EXPECT_NE(image.constBits(), mat.data) << type;
    }
}
