#include "crnnfixture.h"

#include <cmath>
#include <functional>
#include <ostream>
#include <thread>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

cv::Mat greyImage(int width, int height = 32)
{
    return {height, width, CV_8UC1, cv::Scalar(0)};
}

TEST_F(CrnnDetector, ReadsCharacters)
{
    networkReads({0, 1, 1, 0, 1, 2, 3});
    const auto detector = makeDetector();
    std::vector<std::string> characters = {"replaced"};
    EXPECT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_THAT(characters, ElementsAre("A", "A", "B", "D"));
}

TEST_F(CrnnDetector, LogsEachStepOfADetection)
{
    networkReads({1, 2});
    const auto detector = makeDetector();
    const LogCapture log;
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(cv::Mat(64, 200, CV_8UC3, cv::Scalar()), characters));
    const auto line = [](const char* file, const char* text) {
        return LogCapture::Line{google::GLOG_INFO, file, 0, text};
    };
    EXPECT_THAT(log.lines(),
        ElementsAre(line("crnntrtdetector.cpp", "CRNN trt detect with image size: 200x64x3"),
            line("ocrdetector.cpp", "OCRDetector image preProcess resize to :[100 x 32]"),
            line("crnntrtdetector.cpp", "Run CRNN trt engine inference."),
            line("crnntrtdetector.cpp", "Decode CRNN TensorRT output tensors."),
            line("ocrdetector.cpp", "decodeOCR num:25--4"),
            line("crnntrtdetector.cpp", "CRNN trt detected 2 character(s).")));
}

TEST_F(CrnnDetector, VerboseLinesFollowTheVerbosity)
{
    const auto detector = makeDetector();
    const int verbosity = FLAGS_v;
    FLAGS_v = -1;
    const LogCapture log;
    std::vector<std::string> characters;
    EXPECT_TRUE(detector->detect(greyImage(100), characters));
    FLAGS_v = verbosity;
    EXPECT_THAT(log.texts(google::GLOG_INFO),
        ElementsAre("OCRDetector image preProcess resize to :[100 x 32]", "decodeOCR num:25--4"));
}

TEST_F(CrnnDetector, AsksTheRuntimeInThisOrder)
{
    const auto detector = makeDetector();
    runtime.calls.clear();
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_THAT(runtime.calls,
        ElementsAre("setDimensions 0 width 100", "copy 38400 to device", "enqueue", "synchronize",
            "bindingIndex output", "copy 400 to host", "synchronize"));
}

TEST_F(CrnnDetector, TheWidthFollowsTheAspectRatioWithinItsLimits)
{
    const auto detector = makeDetector();
    const auto widthFor = [&](int columns, int rows) {
        std::vector<std::string> characters;
        EXPECT_TRUE(detector->detect(greyImage(columns, rows), characters));
        return runtime.runs.back().inputDims.d[3];
    };
    EXPECT_EQ(widthFor(100, 32), 100);
    EXPECT_EQ(widthFor(10, 32), 32);
    EXPECT_EQ(widthFor(2000, 32), 320);
    // Truncated, not rounded.
    EXPECT_EQ(widthFor(100, 33), 96);
    EXPECT_EQ(widthFor(319, 32), 319);
    EXPECT_EQ(widthFor(321, 32), 320);
    EXPECT_EQ(widthFor(1, 10000), 32);
    EXPECT_EQ(widthFor(1, 1), 32);
    // Beyond what an integer holds once multiplied by the height.
    EXPECT_EQ(widthFor(100000000, 1), 320);
}

TEST_F(CrnnDetector, TheWidthFollowsTheConfiguredHeight)
{
    config.height = 48;
    runtime.inputDims = makeDims({1, 3, 48, -1});
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(greyImage(100, 50), characters));
    EXPECT_EQ(runtime.runs.back().inputDims.d[2], 48);
    EXPECT_EQ(runtime.runs.back().inputDims.d[3], 96);
    EXPECT_EQ(runtime.runs.back().input.size(), 3U * 48 * 96);
}

TEST_F(CrnnDetector, AConfiguredWidthBelow32Wins)
{
    config.width = 20;
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    EXPECT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_EQ(runtime.runs.back().inputDims.d[3], 20);
    EXPECT_TRUE(detector->detect(greyImage(3), characters));
    EXPECT_EQ(runtime.runs.back().inputDims.d[3], 20);
}

TEST_F(CrnnDetector, TheInputIsPlanar)
{
    constexpr int rows = 32;
    constexpr int columns = 40;
    cv::Mat image(rows, columns, CV_8UC3);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            image.at<cv::Vec3b>(row, column) = cv::Vec3b(
                static_cast<uchar>(row), static_cast<uchar>(column + 50), static_cast<uchar>(row * column % 256));
        }
    }
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(image, characters));
    const NetworkRun& run = runtime.runs.back();
    ASSERT_EQ(run.input.size(), 3U * rows * columns);
    for (int channel = 0; channel < 3; ++channel) {
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const auto value = static_cast<float>(image.at<cv::Vec3b>(row, column)[channel]);
                ASSERT_NEAR(run.input[static_cast<std::size_t>((channel * rows + row) * columns + column)],
                    value / 127.5F - 1.0F, 1e-6)
                    << channel << ' ' << row << ' ' << column;
            }
        }
    }
}

TEST_F(CrnnDetector, LetterBoxesWhereTheModelDoes)
{
    config.letter_box = true;
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    // Narrower than the least width: the picture is centred in it, on grey.
    ASSERT_TRUE(detector->detect(cv::Mat(32, 10, CV_8UC1, cv::Scalar(255)), characters));
    const std::vector<float>& input = runtime.runs.back().input;
    EXPECT_NEAR(input[0], 0.0039215686, 1e-6);
    EXPECT_FLOAT_EQ(input[16], 1.0F);
    EXPECT_NEAR(input[31], 0.0039215686, 1e-6);
}

TEST_F(CrnnDetector, OutputsTakeTheirActualShapeFromEachRun)
{
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_EQ(detector->outputs[0].timeSteps, 25);
    EXPECT_EQ(detector->outputs[0].byteSize, 25 * 4 * 4);
    ASSERT_TRUE(detector->detect(greyImage(320), characters));
    EXPECT_EQ(detector->outputs[0].timeSteps, 80);
    EXPECT_EQ(detector->outputs[0].byteSize, 80 * 4 * 4);
    ASSERT_TRUE(detector->detect(greyImage(32), characters));
    EXPECT_EQ(detector->outputs[0].timeSteps, 8);

    runtime.outputDims = [](int, int width) { return makeDims({width / 8, 2, 3, 1}); };
    ASSERT_TRUE(detector->detect(greyImage(320), characters));
    const OutputTensor& output = detector->outputs[0];
    EXPECT_THAT(
        (std::vector<int>{output.timeSteps, output.dim1, output.numClasses, output.dim3}), ElementsAre(40, 2, 3, 1));
    EXPECT_EQ(output.byteSize, 40 * 2 * 3 * 4);
}

TEST_F(CrnnDetector, ReadsSeveralOutputsInBindingOrder)
{
    runtime.bindingNames = {"input", "first", "second"};
    config.output_layers = {"first", "second"};
    runtime.network = [](NetworkRun& run) {
        const std::vector<float> first = scoresOf({1, 2});
        const std::vector<float> second = scoresOf({3, 0, 3});
        std::copy(first.begin(), first.end(), run.outputs[0].begin());
        std::copy(second.begin(), second.end(), run.outputs[1].begin());
    };
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_THAT(characters, ElementsAre("A", "B", "D", "D"));
}

TEST_F(CrnnDetector, NothingReadIsASuccess)
{
    const auto detector = makeDetector();
    const LogCapture log;
    std::vector<std::string> characters = {"replaced"};
    EXPECT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_THAT(characters, IsEmpty());
    EXPECT_EQ(log.count("CRNN trt detected 0 character(s)."), 1);
}

TEST_F(CrnnDetector, AnEmptyImageIsRefused)
{
    const auto detector = makeDetector();
    const LogCapture log;
    std::vector<std::string> characters = {"old"};
    EXPECT_FALSE(detector->detect(cv::Mat(), characters));
    EXPECT_THAT(characters, IsEmpty());
    EXPECT_THAT(log.texts(google::GLOG_ERROR), ElementsAre("Invalid input image for CRNN trt detecting."));
}

TEST_F(CrnnDetector, AnImageOfAnotherChannelCountFailsInPreProcessing)
{
    const auto detector = makeDetector();
    for (const int channels : {2, 4}) {
        const LogCapture log;
        std::vector<std::string> characters = {"old"};
        EXPECT_FALSE(detector->detect(cv::Mat(32, 100, CV_8UC(channels), cv::Scalar()), characters));
        EXPECT_THAT(characters, IsEmpty());
        EXPECT_THAT(log.texts(google::GLOG_ERROR),
            ElementsAre("Unsupported image format for inference.", "CRNN trt pre-processing failed."));
    }
    EXPECT_EQ(runtime.callCount("enqueue"), 0);
}

TEST_F(CrnnDetector, WhatTheImageLibraryRaisesReachesTheCallerAndHarmsNothing)
{
    networkReads({1});
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    EXPECT_THROW(detector->detect(cv::Mat(64, 100, CV_32SC1, cv::Scalar(1)), characters), cv::Exception);
    const int sizes[] = {4, 4, 4};
    EXPECT_THROW(detector->detect(cv::Mat(3, sizes, CV_8UC1, cv::Scalar(1)), characters), cv::Exception);
    EXPECT_TRUE(detector->detect(greyImage(100), characters));
    EXPECT_THAT(characters, ElementsAre("A"));
}

TEST_F(CrnnDetector, CallersOnManyThreadsGetTheirOwnCharacters)
{
    runtime.network = [](NetworkRun& run) {
        const auto seen = static_cast<int>(std::lround((run.input[0] + 1) * 127.5));
        const std::vector<float> scores = scoresOf({seen / 100, 0, seen / 10 % 10, 0, seen % 10});
        std::copy(scores.begin(), scores.end(), run.outputs[0].begin());
    };
    const auto detector = makeDetector();
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 6; ++caller) {
        callers.emplace_back([&, caller] {
            const std::string letters = "-ABD";
            // Three digits of 1 to 2 in base 10: 111, 112, 121, ...
            const int value = 111 + caller % 2 + 10 * (caller / 2 % 2) + 100 * (caller / 4);
            const std::vector<std::string> expected = {letters.substr(static_cast<std::size_t>(value / 100), 1),
                letters.substr(static_cast<std::size_t>(value / 10 % 10), 1),
                letters.substr(static_cast<std::size_t>(value % 10), 1)};
            for (int i = 0; i < 100; ++i) {
                std::vector<std::string> characters;
                EXPECT_TRUE(detector->detect(cv::Mat(32, 32 + i, CV_8UC1, cv::Scalar(value)), characters));
                EXPECT_EQ(characters, expected);
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
}

TEST_F(CrnnDetector, AClassThatTheAlphabetLacksFailsNoOtherCallersReading)
{
    config.alphabet = {"A", "B"};
    runtime.network = [](NetworkRun& run) {
        const auto seen = static_cast<int>(std::lround((run.input[0] + 1) * 127.5));
        const std::vector<float> scores = scoresOf({1, 0, seen});
        std::copy(scores.begin(), scores.end(), run.outputs[0].begin());
    };
    const auto detector = makeDetector();
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 4; ++caller) {
        callers.emplace_back([&, lacks = caller % 2 == 0] {
            for (int i = 0; i < 100; ++i) {
                std::vector<std::string> characters = {"old"};
                EXPECT_EQ(detector->detect(cv::Mat(32, 32, CV_8UC1, cv::Scalar(lacks ? 3 : 2)), characters), !lacks);
                EXPECT_EQ(characters, lacks ? std::vector<std::string>() : std::vector<std::string>({"A", "B"}));
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
}

TEST_F(CrnnDetector, AnInputBeyondItsBufferIsRefused)
{
    const auto detector = makeDetector();
    for (const cv::Mat& image : {cv::Mat(32, 321, CV_32FC3), cv::Mat(64, 320, CV_32FC3), cv::Mat(32, 320, CV_32FC4),
             cv::Mat(32, 320, CV_8UC3)}) {
        const LogCapture log;
        std::vector<std::string> characters;
        EXPECT_FALSE(detector->infer(image, cv::Size(), characters));
        EXPECT_EQ(log.texts(google::GLOG_ERROR).size(), 1U);
    }
    EXPECT_EQ(runtime.callCount("copy"), 0);
}

TEST_F(CrnnDetector, AnOutputBeyondItsBufferIsNotRead)
{
    const auto detector = makeDetector();
    nvinfer1::Dims error = makeDims({});
    error.nbDims = -1;
    // Larger than at the full width, of unknown size, of more scores than bytes, and none at all.
    for (const nvinfer1::Dims& dims : {makeDims({81, 1, 4}), makeDims({-1, 1, 4}), makeDims({900, 0, 900}), error}) {
        runtime.network = [&](NetworkRun&) { runtime.outputDims = [dims](int, int) { return dims; }; };
        const LogCapture log;
        std::vector<std::string> characters;
        EXPECT_FALSE(detector->detect(greyImage(320), characters));
        EXPECT_THAT(log.texts(google::GLOG_ERROR),
            ElementsAre("CRNN trt output buffer does not hold the tensor of layer: output",
                "CRNN trt request inference failed."));
        runtime.outputDims = [](int, int width) { return makeDims({width / 4, 1, 4}); };
    }
    EXPECT_EQ(runtime.callCount("copy 1280 to host"), 0);
}

/// One way in which an inference fails, and the ERROR lines that it leaves.
struct InferenceFault
{
    std::string name;
    std::function<void(RuntimeDouble&)> arrange;
    std::vector<std::string> errors;
};

std::ostream& operator<<(std::ostream& stream, const InferenceFault& fault)
{
    return stream << fault.name;
}

class CrnnInferenceFault : public CrnnDetector, public ::testing::WithParamInterface<InferenceFault>
{
};

TEST_P(CrnnInferenceFault, IsLoggedAndLeavesTheDetectorUsable)
{
    networkReads({1, 2});
    const auto detector = makeDetector();
    std::vector<std::string> characters;
    ASSERT_TRUE(detector->detect(greyImage(200), characters));

    const RuntimeDouble working = runtime;
    GetParam().arrange(runtime);
    const LogCapture log;
    characters = {"old"};
    EXPECT_FALSE(detector->detect(greyImage(100), characters));
    EXPECT_THAT(characters, IsEmpty());
    std::vector<std::string> expected = GetParam().errors;
    expected.emplace_back("CRNN trt request inference failed.");
    EXPECT_EQ(log.texts(google::GLOG_ERROR), expected);
    for (const LogCapture::Line& line : log.lines()) {
        EXPECT_TRUE(line.severity != google::GLOG_ERROR || line.file == "crnntrtdetector.cpp") << line;
    }

    runtime.acceptsDimensions = working.acceptsDimensions;
    runtime.acceptsRuns = working.acceptsRuns;
    runtime.bindingNames = working.bindingNames;
    networkReads({3, 0, 3});
    EXPECT_TRUE(detector->isReady());
    EXPECT_TRUE(detector->detect(greyImage(60), characters));
    EXPECT_THAT(characters, ElementsAre("D", "D"));
}

const InferenceFault inferenceFaults[] = {
    {"RefusedWidth", [](RuntimeDouble& runtime) { runtime.acceptsDimensions = false; },
        {"Configuration for CRNN trt input setBindingDimensions error."}},
    {"InputNotCopied", [](RuntimeDouble& runtime) { runtime.failingCopies = {3}; },
        {"CRNN trt CUDA memory copy of input failed, size = 38400 bytes",
            "Last CUDA error: invalid value, says the double"}},
    {"NotRun", [](RuntimeDouble& runtime) { runtime.acceptsRuns = false; }, {"CRNN TensorRT inference failed."}},
    {"RunNotFinished", [](RuntimeDouble& runtime) { runtime.failingSynchronizations = {3}; },
        {"CRNN trt enqueueV2 cuda stream synchronize failed: unknown error, says the double"}},
    {"OutputMisplaced",
        [](RuntimeDouble& runtime) {
            const auto network = runtime.network;
            runtime.network = [&runtime, network](NetworkRun& run) {
                network(run);
                runtime.bindingNames[1] = "elsewhere";
            };
        },
        {"Get CRNN trt engine output binding failed for layer: output"}},
    {"OutputNotCopied", [](RuntimeDouble& runtime) { runtime.failingCopies = {4}; },
        {"CRNN trt CUDA memory copy of output output failed, size = 400 bytes",
            "Last CUDA error: invalid value, says the double"}},
    {"OutputNotFinished", [](RuntimeDouble& runtime) { runtime.failingSynchronizations = {4}; },
        {"CRNN trt cuda stream synchronize failed: unknown error, says the double"}},
};

INSTANTIATE_TEST_SUITE_P(Every, CrnnInferenceFault, ::testing::ValuesIn(inferenceFaults),
    [](const auto& fault) { return fault.param.name; });

} // namespace
