#include "nvlogger.h"

#include "logcapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Severity = nvinfer1::ILogger::Severity;

class NvLogger : public ::testing::Test
{
protected:
    ~NvLogger() override { FLAGS_v = verbosity; }

    const int verbosity = FLAGS_v;
    Logger& logger = Logger::instance();
    LogCapture log;
};

LogCapture::Line line(google::LogSeverity severity, const char* text)
{
    return {severity, "nvlogger.cpp", 0, text};
}

TEST_F(NvLogger, IsOneForTheProcess)
{
    Logger* other = nullptr;
    std::thread thread([&] { other = &Logger::instance(); });
    thread.join();
    EXPECT_EQ(other, &logger);
}

TEST_F(NvLogger, KeepsSeveritiesAndTexts)
{
    logger.log(Severity::kERROR, "an error");
    logger.log(Severity::kWARNING, "  a warning with % and {} \xE6\x95\xB0 ");
    logger.log(Severity::kINFO, "");
    logger.log(Severity::kVERBOSE, "a detail");
    EXPECT_THAT(log.lines(),
        ElementsAre(line(google::GLOG_ERROR, "an error"),
            line(google::GLOG_WARNING, "  a warning with % and {} \xE6\x95\xB0 "), line(google::GLOG_INFO, ""),
            line(google::GLOG_INFO, "a detail")));
}

TEST_F(NvLogger, WritesDetailsFromAPlaceOfTheirOwn)
{
    logger.log(Severity::kERROR, "an error");
    logger.log(Severity::kWARNING, "a warning");
    logger.log(Severity::kINFO, "an information");
    logger.log(Severity::kVERBOSE, "a detail");
    const std::vector<LogCapture::Line> lines = log.lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[1].number, lines[0].number);
    EXPECT_EQ(lines[2].number, lines[0].number);
    EXPECT_NE(lines[3].number, lines[0].number);
}

TEST_F(NvLogger, AnythingBeyondVerboseIsVerbose)
{
    logger.log(static_cast<Severity>(5), "finer");
    logger.log(static_cast<Severity>(1000), "finest");
    EXPECT_THAT(log.lines(), ElementsAre(line(google::GLOG_INFO, "finer"), line(google::GLOG_INFO, "finest")));
}

TEST_F(NvLogger, DropsDetailsBelowVerbosityZero)
{
    FLAGS_v = -1;
    logger.log(Severity::kVERBOSE, "a detail");
    logger.log(static_cast<Severity>(5), "finer");
    EXPECT_THAT(log.lines(), IsEmpty());
    logger.log(Severity::kINFO, "an information");
    EXPECT_THAT(log.lines(), ElementsAre(line(google::GLOG_INFO, "an information")));
    FLAGS_v = 2;
    logger.log(Severity::kVERBOSE, "a detail");
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(NvLogger, MayBeCalledFromAnyThread)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this] {
            for (int i = 0; i < 100; ++i) {
                logger.log(Severity::kWARNING, "again");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(log.count("again"), 400);
}

TEST(NvLoggerDeathTest, AnInternalErrorIsWrittenAndEndsTheProcess)
{
    ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(Logger::instance().log(Severity::kINTERNAL_ERROR, "the engine is lost"),
        "F.*nvlogger.cpp:[0-9]+\\] the engine is lost");
}

} // namespace
