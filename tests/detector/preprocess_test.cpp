#include "ocrdetector.h"

#include "logcapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Preprocessor : public OCRDetector
{
public:
    explicit Preprocessor(bool letterBox = false)
        : OCRDetector(configuration(letterBox))
    {
        // Afterwards the worker has written its first line.
        std::vector<std::string> characters;
        submitRequest(cv::Mat(), cv::Size(), characters);
    }

    using OCRDetector::preProcess;
    using OCRDetector::resizeImage;

private:
    static DetectorConfig configuration(bool letterBox)
    {
        DetectorConfig config;
        config.letter_box = letterBox;
        return config;
    }
};

constexpr float white = 1.0F;
constexpr float black = -1.0F;
constexpr float border = 0.0039215686F;

::testing::AssertionResult allEqual(const cv::Mat& image, const cv::Rect& area, float value)
{
    for (int row = area.y; row < area.y + area.height; ++row) {
        for (int column = area.x; column < area.x + area.width; ++column) {
            for (int channel = 0; channel < 3; ++channel) {
                const float found = image.at<cv::Vec3f>(row, column)[channel];
                if (std::abs(found - value) > 1e-6F) {
                    return ::testing::AssertionFailure() << found << " at " << column << ", " << row;
                }
            }
        }
    }
    return ::testing::AssertionSuccess();
}

cv::Mat preProcessed(bool letterBox, const cv::Mat& image, const cv::Size& target)
{
    Preprocessor detector(letterBox);
    cv::Mat output;
    EXPECT_TRUE(detector.preProcess(image, output, target));
    EXPECT_EQ(output.type(), CV_32FC3);
    EXPECT_EQ(output.size(), target);
    return output;
}

/// The area of a letter-boxed white image that is not border.
cv::Rect contentOf(const cv::Size& image, const cv::Size& target)
{
    const cv::Mat output = preProcessed(true, cv::Mat(image, CV_8UC3, cv::Scalar::all(255)), target);
    std::vector<cv::Mat> planes;
    cv::split(output, planes);
    const cv::Rect content = cv::boundingRect(planes[0] > 0.5F);
    EXPECT_TRUE(allEqual(output, content, white));
    cv::Mat outside = output.clone();
    outside(content) = cv::Scalar::all(border);
    EXPECT_TRUE(allEqual(outside, cv::Rect({0, 0}, target), border));
    return content;
}

TEST(PreProcess, StretchesAGreyImageAndTriplesIt)
{
    cv::Mat image(50, 100, CV_8UC1, cv::Scalar(0));
    image(cv::Rect(50, 0, 50, 50)) = 255;
    const cv::Mat output = preProcessed(false, image, cv::Size(160, 32));
    EXPECT_TRUE(allEqual(output, cv::Rect(0, 0, 79, 32), black));
    EXPECT_TRUE(allEqual(output, cv::Rect(81, 0, 79, 32), white));
}

TEST(PreProcess, StretchesAColouredImageAndKeepsTheOrderOfItsChannels)
{
    const cv::Mat image(10, 10, CV_8UC3, cv::Scalar(0, 128, 255));
    const cv::Mat output = preProcessed(false, image, cv::Size(40, 32));
    for (const cv::Point& corner : {cv::Point(0, 0), cv::Point(39, 31)}) {
        const auto pixel = output.at<cv::Vec3f>(corner);
        EXPECT_FLOAT_EQ(pixel[0], -1.0F);
        EXPECT_NEAR(pixel[1], border, 1e-7);
        EXPECT_FLOAT_EQ(pixel[2], 1.0F);
    }
}

TEST(PreProcess, InterpolatesLinearly)
{
    const cv::Mat image = (cv::Mat_<uchar>(1, 2) << 0, 200);
    const cv::Mat output = preProcessed(false, image, cv::Size(4, 1));
    const float expected[] = {0, 50, 150, 200};
    for (int column = 0; column < 4; ++column) {
        EXPECT_NEAR(output.at<cv::Vec3f>(0, column)[1], expected[column] / 127.5F - 1.0F, 1e-6) << column;
    }
}

TEST(PreProcess, LetterBoxPadsLeftAndRight)
{
    cv::Mat image(50, 100, CV_8UC1, cv::Scalar(255));
    const cv::Mat output = preProcessed(true, image, cv::Size(160, 32));
    EXPECT_TRUE(allEqual(output, cv::Rect(0, 0, 48, 32), border));
    EXPECT_TRUE(allEqual(output, cv::Rect(48, 0, 64, 32), white));
    EXPECT_TRUE(allEqual(output, cv::Rect(112, 0, 48, 32), border));
}

TEST(PreProcess, LetterBoxPadsTopAndBottom)
{
    EXPECT_EQ(contentOf(cv::Size(101, 10), cv::Size(100, 30)), cv::Rect(0, 10, 100, 10));
}

TEST(PreProcess, AnOddRemainderGoesRightAndDown)
{
    EXPECT_EQ(contentOf(cv::Size(97, 32), cv::Size(100, 32)), cv::Rect(1, 0, 97, 32));
    EXPECT_EQ(contentOf(cv::Size(100, 29), cv::Size(100, 32)), cv::Rect(0, 1, 100, 29));
}

TEST(PreProcess, HalfAPixelRoundsAwayFromZero)
{
    // 5 rows at scale 0.5 are 2.5 rows, 3 rounded; 2 would be the even neighbour.
    EXPECT_EQ(contentOf(cv::Size(20, 5), cv::Size(10, 9)), cv::Rect(0, 3, 10, 3));
}

TEST(PreProcess, LetterBoxIsComputedInSinglePrecision)
{
    // 42 / 20 is a little less than 2.1 then, and 15 rows of it a little less than the 31.5 that round to 32.
    EXPECT_EQ(contentOf(cv::Size(20, 15), cv::Size(42, 32)), cv::Rect(0, 0, 42, 31));
}

TEST(PreProcess, LetterBoxOfEqualScalesHasNoBorder)
{
    EXPECT_EQ(contentOf(cv::Size(320, 64), cv::Size(160, 32)), cv::Rect(0, 0, 160, 32));
}

TEST(PreProcess, LetterBoxOfAColouredImageHasAGreyBorder)
{
    const cv::Mat image(32, 32, CV_8UC3, cv::Scalar(0, 0, 255));
    const cv::Mat output = preProcessed(true, image, cv::Size(64, 32));
    EXPECT_TRUE(allEqual(output, cv::Rect(0, 0, 16, 32), border));
    const auto pixel = output.at<cv::Vec3f>(16, 32);
    EXPECT_FLOAT_EQ(pixel[0], -1.0F);
    EXPECT_FLOAT_EQ(pixel[1], -1.0F);
    EXPECT_FLOAT_EQ(pixel[2], 1.0F);
}

TEST(PreProcess, ScalesOtherDepthsAsTheyStand)
{
    const auto valueOf
        = [](const cv::Mat& image) { return preProcessed(false, image, cv::Size(32, 32)).at<cv::Vec3f>(5, 5)[0]; };
    EXPECT_NEAR(valueOf(cv::Mat(4, 4, CV_16UC1, cv::Scalar(65535))), 513.0F, 1e-3);
    EXPECT_NEAR(valueOf(cv::Mat(4, 4, CV_16SC3, cv::Scalar::all(-255))), -3.0F, 1e-5);
    EXPECT_NEAR(valueOf(cv::Mat(4, 4, CV_32FC1, cv::Scalar(0.5))), 0.5F / 127.5F - 1.0F, 1e-6);
    EXPECT_NEAR(valueOf(cv::Mat(4, 4, CV_64FC1, cv::Scalar(255.0))), 1.0F, 1e-6);
}

TEST(PreProcess, RefusesOtherChannelCounts)
{
    Preprocessor detector;
    for (const int channels : {2, 4, 5}) {
        const LogCapture log;
        cv::Mat output(2, 2, CV_8UC1, cv::Scalar(9));
        const uchar* const data = output.data;
        EXPECT_FALSE(detector.preProcess(cv::Mat(8, 8, CV_8UC(channels)), output, cv::Size(32, 32)));
        EXPECT_EQ(output.data, data);
        EXPECT_EQ(output.at<uchar>(1, 1), 9);
        const std::vector<LogCapture::Line> expected
            = {{google::GLOG_INFO, "ocrdetector.cpp", 0, "OCRDetector image preProcess resize to :[32 x 32]"},
                {google::GLOG_ERROR, "ocrdetector.cpp", 0, "Unsupported image format for inference."}};
        EXPECT_EQ(log.lines(), expected);
    }
}

TEST(PreProcess, LogsTheTargetSize)
{
    Preprocessor detector;
    const LogCapture log;
    cv::Mat output;
    EXPECT_TRUE(detector.preProcess(cv::Mat(8, 8, CV_8UC1, cv::Scalar(0)), output, cv::Size(160, 32)));
    EXPECT_THAT(log.texts(google::GLOG_INFO), ElementsAre("OCRDetector image preProcess resize to :[160 x 32]"));
    EXPECT_THAT(log.texts(google::GLOG_ERROR), IsEmpty());
}

TEST(PreProcess, LetsTheImageLibraryRefuseEmptyImagesAndTargets)
{
    const cv::Mat image(8, 8, CV_8UC1, cv::Scalar(0));
    for (const bool letterBox : {false, true}) {
        Preprocessor detector(letterBox);
        cv::Mat output;
        EXPECT_THROW(detector.preProcess(cv::Mat(), output, cv::Size(32, 32)), cv::Exception);
        EXPECT_THROW(detector.preProcess(cv::Mat(0, 5, CV_8UC1), output, cv::Size(32, 32)), cv::Exception);
        EXPECT_THROW(detector.preProcess(image, output, cv::Size(0, 0)), cv::Exception);
        EXPECT_THROW(detector.preProcess(image, output, cv::Size(0, 32)), cv::Exception);
        EXPECT_THROW(detector.preProcess(image, output, cv::Size(-32, 32)), cv::Exception);
        EXPECT_THROW(detector.preProcess(image, output, cv::Size(32, -1)), cv::Exception);
    }
    // So thin that no pixel of it is left at the target's scale.
    Preprocessor letterBoxing(true);
    cv::Mat output;
    EXPECT_THROW(letterBoxing.preProcess(cv::Mat(100000, 1, CV_8UC1), output, cv::Size(32, 32)), cv::Exception);
}

TEST(PreProcess, ExtremeShapesBecomeTheTarget)
{
    for (const cv::Size& size : {cv::Size(1, 1), cv::Size(100000, 1), cv::Size(1, 30000), cv::Size(3, 2000)}) {
        preProcessed(false, cv::Mat(size, CV_8UC1, cv::Scalar(7)), cv::Size(32, 32));
    }
    preProcessed(true, cv::Mat(1, 1, CV_8UC1, cv::Scalar(7)), cv::Size(320, 32));
}

TEST(PreProcess, AViewIntoALargerImageIsReadWithinItsBounds)
{
    cv::Mat image(60, 60, CV_8UC1, cv::Scalar(0));
    image(cv::Rect(20, 20, 16, 16)) = 255;
    const cv::Mat output = preProcessed(false, image(cv::Rect(20, 20, 16, 16)), cv::Size(64, 32));
    EXPECT_TRUE(allEqual(output, cv::Rect(0, 0, 64, 32), white));
}

TEST(PreProcess, LeavesItsInputAlone)
{
    const cv::Mat image(50, 100, CV_8UC1, cv::Scalar(200));
    const cv::Mat before = image.clone();
    preProcessed(true, image, cv::Size(160, 32));
    EXPECT_EQ(cv::countNonZero(image != before), 0);
}

TEST(ResizeImage, KeepsTheDepthAndTheChannels)
{
    Preprocessor detector;
    cv::Mat output;
    detector.resizeImage(cv::Mat(50, 100, CV_16UC3, cv::Scalar(1, 2, 3)), output, cv::Size(160, 32), true);
    EXPECT_EQ(output.type(), CV_16UC3);
    EXPECT_EQ(output.size(), cv::Size(160, 32));
    EXPECT_EQ(output.at<cv::Vec3w>(0, 0), cv::Vec3w(128, 128, 128));
    EXPECT_EQ(output.at<cv::Vec3w>(0, 80), cv::Vec3w(1, 2, 3));
}

} // namespace
