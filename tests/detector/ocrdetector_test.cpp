#include "ocrdetector.h"

#include "logcapture.h"
#include "threadlimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <functional>
#include <set>
#include <string>
#include <system_error>
#include <thread>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A detector whose inference is the test's.
class ScriptedDetector : public OCRDetector
{
public:
    using Inference = std::function<bool(const cv::Mat&, const cv::Size&, std::vector<std::string>&)>;

    explicit ScriptedDetector(Inference inference)
        : OCRDetector(DetectorConfig())
        , inference(std::move(inference))
    {
    }

    using OCRDetector::config;
    using OCRDetector::submitRequest;

protected:
    bool infer(cv::Mat image, const cv::Size& sourceSize, std::vector<std::string>& characters) override
    {
        return inference(image, sourceSize, characters);
    }

private:
    const Inference inference;
};

class PlainDetector : public OCRDetector
{
public:
    using OCRDetector::config;
    using OCRDetector::OCRDetector;
    using OCRDetector::outputs;
    using OCRDetector::submitRequest;
};

cv::Mat imageOf(int value)
{
    return {1, 1, CV_32SC1, cv::Scalar(value)};
}

TEST(OCRDetector, StartsEmptyAndNotReady)
{
    const PlainDetector detector{DetectorConfig()};
    EXPECT_FALSE(detector.isReady());
    EXPECT_THAT(detector.outputs, IsEmpty());
}

TEST(OCRDetector, KeepsItsOwnCopyOfTheConfiguration)
{
    DetectorConfig config;
    config.alphabet = {"A"};
    const PlainDetector detector(config);
    config.alphabet.clear();
    EXPECT_THAT(detector.config.alphabet, ElementsAre("A"));
}

TEST(OCRDetector, CannotDetectByItself)
{
    PlainDetector detector{DetectorConfig()};
    const LogCapture log;
    std::vector<std::string> characters = {"kept"};
    EXPECT_FALSE(detector.detect(cv::Mat(3, 3, CV_8UC1), characters));
    EXPECT_FALSE(detector.detect(cv::Mat(), characters));
    EXPECT_THAT(characters, ElementsAre("kept"));
    EXPECT_THAT(log.texts(google::GLOG_ERROR),
        ElementsAre("Object detection not supported.", "Object detection not supported."));
    EXPECT_EQ(log.lines().back().file, "ocrdetector.cpp");
}

TEST(OCRDetector, InfersNothingByItself)
{
    PlainDetector detector{DetectorConfig()};
    std::vector<std::string> characters = {"replaced"};
    EXPECT_TRUE(detector.submitRequest(imageOf(1), cv::Size(1, 1), characters));
    EXPECT_THAT(characters, IsEmpty());
}

TEST(OCRDetector, SetsTheConfidenceThreshold)
{
    PlainDetector detector{DetectorConfig()};
    const LogCapture log;
    EXPECT_EQ(detector.config.confThreshold, 0.5F);
    EXPECT_TRUE(detector.setConfidenceThreshold(0.25F));
    EXPECT_EQ(detector.config.confThreshold, 0.25F);
    EXPECT_TRUE(detector.setConfidenceThreshold(0.5F));
    EXPECT_EQ(log.count("Setting object detector class confidence threshold to 0.25"), 1);
    EXPECT_EQ(log.count("Setting object detector class confidence threshold to 0.5"), 1);
    EXPECT_THAT(log.texts(google::GLOG_ERROR), IsEmpty());
}

TEST(OCRDetector, SeveralThreadsMaySetTheThreshold)
{
    PlainDetector detector{DetectorConfig()};
    std::thread other([&] { detector.setConfidenceThreshold(1.0F); });
    detector.setConfidenceThreshold(1.0F);
    other.join();
    EXPECT_EQ(detector.config.confThreshold, 1.0F);
}

TEST(OCRDetector, LogsTheLifeOfItsThreadOnce)
{
    const LogCapture log;
    {
        const PlainDetector detector{DetectorConfig()};
    }
    const std::vector<LogCapture::Line> expected
        = {{google::GLOG_INFO, "ocrdetector.cpp", 0, "OCR detector inference thread started."},
            {google::GLOG_INFO, "ocrdetector.cpp", 0, "OCR detector inference thread stopped."}};
    EXPECT_EQ(log.lines(), expected);
}

TEST(OCRDetector, WithoutAThreadCannotBeMade)
{
    const NoMoreThreads noMoreThreads;
    try {
        const PlainDetector detector{DetectorConfig()};
        FAIL() << "made without a thread";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
    }
}

TEST(OCRDetector, HandsImageSizeAndResultBetweenCallerAndWorker)
{
    const std::thread::id caller = std::this_thread::get_id();
    cv::Mat image = imageOf(7);
    ScriptedDetector detector([&](const cv::Mat& seen, const cv::Size& size, std::vector<std::string>& characters) {
        EXPECT_NE(std::this_thread::get_id(), caller);
        EXPECT_EQ(seen.data, image.data);
        EXPECT_EQ(size, cv::Size(123, 45));
        EXPECT_THAT(characters, IsEmpty());
        characters = {"A", "\xE6\x95\xB0"};
        return true;
    });
    std::vector<std::string> characters = {"replaced"};
    EXPECT_TRUE(detector.submitRequest(image, cv::Size(123, 45), characters));
    EXPECT_THAT(characters, ElementsAre("A", "\xE6\x95\xB0"));
}

TEST(OCRDetector, AFailedInferenceReplacesTheCharactersToo)
{
    ScriptedDetector detector([](const cv::Mat&, const cv::Size&, std::vector<std::string>& characters) {
        characters = {"half"};
        return false;
    });
    std::vector<std::string> characters = {"replaced"};
    EXPECT_FALSE(detector.submitRequest(imageOf(1), cv::Size(), characters));
    EXPECT_THAT(characters, ElementsAre("half"));
}

TEST(OCRDetector, RunsAllInferencesOnOneThread)
{
    std::set<std::thread::id> workers;
    ScriptedDetector detector([&](const cv::Mat&, const cv::Size&, std::vector<std::string>&) {
        workers.insert(std::this_thread::get_id());
        return true;
    });
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&] {
            std::vector<std::string> characters;
            for (int i = 0; i < 50; ++i) {
                EXPECT_TRUE(detector.submitRequest(imageOf(i), cv::Size(), characters));
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(workers.size(), 1U);
}

TEST(OCRDetector, ResultsOfManyCallersNeverCross)
{
    ScriptedDetector detector([](const cv::Mat& image, const cv::Size&, std::vector<std::string>& characters) {
        const int value = image.at<int>(0);
        characters = {std::to_string(value)};
        return value % 2 == 0;
    });
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 8; ++caller) {
        callers.emplace_back([&detector, caller] {
            std::vector<std::string> characters;
            for (int i = 0; i < 200; ++i) {
                const int value = caller * 1000 + i;
                EXPECT_EQ(detector.submitRequest(imageOf(value), cv::Size(), characters), value % 2 == 0);
                EXPECT_THAT(characters, ElementsAre(std::to_string(value)));
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
}

TEST(OCRDetector, SubmittersBeyondTheQueuesRoomWaitAndAreServed)
{
    std::promise<void> gate;
    std::shared_future<void> opened = gate.get_future().share();
    ScriptedDetector detector([opened](const cv::Mat& image, const cv::Size&, std::vector<std::string>& characters) {
        opened.wait();
        characters = {std::to_string(image.at<int>(0))};
        return true;
    });
    // One in the worker's hands, 100 queued, the others waiting for room.
    std::vector<std::thread> callers;
    std::atomic<int> served = 0;
    for (int caller = 0; caller < 120; ++caller) {
        callers.emplace_back([&, caller] {
            std::vector<std::string> characters;
            EXPECT_TRUE(detector.submitRequest(imageOf(caller), cv::Size(), characters));
            EXPECT_THAT(characters, ElementsAre(std::to_string(caller)));
            ++served;
        });
    }
    EXPECT_EQ(served, 0);
    gate.set_value();
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(served, 120);
}

TEST(OCRDetector, ManyComeAndGo)
{
    for (int i = 0; i < 50; ++i) {
        ScriptedDetector detector([](const cv::Mat&, const cv::Size&, std::vector<std::string>&) { return true; });
        if (i % 2 == 0) {
            std::vector<std::string> characters;
            EXPECT_TRUE(detector.submitRequest(imageOf(i), cv::Size(), characters));
        }
    }
}

TEST(OCRDetectorDeathTest, AnExceptionOnTheWorkerEndsTheProcess)
{
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            ScriptedDetector detector([](const cv::Mat&, const cv::Size&, std::vector<std::string>&) -> bool {
                throw std::runtime_error("boom");
            });
            std::vector<std::string> characters;
            detector.submitRequest(imageOf(1), cv::Size(), characters);
        },
        "ocrdetector.cpp:[0-9]+\\] OCR detector inference thread exception: boom");
}

TEST(OCRDetectorDeathTest, SoDoesOneOfTheImageLibrary)
{
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            ScriptedDetector detector([](const cv::Mat&, const cv::Size&, std::vector<std::string>&) -> bool {
                CV_Error(cv::Error::StsBadArg, "bad image");
            });
            std::vector<std::string> characters;
            detector.submitRequest(imageOf(1), cv::Size(), characters);
        },
        "OCR detector inference thread exception: .*bad image");
}

} // namespace
