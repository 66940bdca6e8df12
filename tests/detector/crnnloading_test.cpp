#include "crnnfixture.h"

#include "nvlogger.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <ostream>

#include <sys/stat.h>

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(CrnnDetector, LoadsAnEngineOfDynamicWidth)
{
    const LogCapture log;
    const auto detector = makeDetector();
    EXPECT_TRUE(detector->isReady());
    EXPECT_EQ(runtime.engineBytes, "serialised engine");
    EXPECT_EQ(runtime.version, 8601);
    EXPECT_EQ(runtime.logger, &Logger::instance());
    EXPECT_THAT(log.texts(google::GLOG_ERROR), IsEmpty());
    EXPECT_EQ(log.count("Initialize CRNN trt detector from file:" + enginePath), 1);
    EXPECT_EQ(log.count("Initialize CRNN trt detector success."), 1);
}

TEST_F(CrnnDetector, AllocatesOnceForTheFullWidth)
{
    const auto detector = makeDetector();
    EXPECT_THAT(runtime.calls,
        ElementsAre("createRuntime", "bindingIndex input", "setDimensions 0 width 320", "malloc 122880",
            "bindingIndex output", "malloc 1280", "createStream"));
    detector->infer(cv::Mat(32, 100, CV_32FC3), cv::Size(), *std::make_unique<std::vector<std::string>>());
    EXPECT_EQ(runtime.callCount("malloc"), 2);
}

TEST_F(CrnnDetector, DescribesItsOutputs)
{
    runtime.bindingNames = {"input", "first", "second"};
    runtime.outputDims = [](std::int32_t binding, std::int32_t width) {
        return binding == 1 ? makeDims({width / 2, 1, 4}) : makeDims({width / 8, 2, 5, 3});
    };
    config.output_layers = {"first", "second"};
    const auto detector = makeDetector();
    ASSERT_TRUE(detector->isReady());
    ASSERT_EQ(detector->outputs.size(), 2U);
    const OutputTensor& first = detector->outputs[0];
    EXPECT_EQ(first.name, "first");
    // A quarter of the width, whatever the binding says, until the first inference.
    EXPECT_EQ(first.timeSteps, 80);
    EXPECT_EQ(first.dim1, 1);
    EXPECT_EQ(first.numClasses, 4);
    EXPECT_EQ(first.dim3, 0);
    EXPECT_EQ(first.byteSize, 160 * 4 * 4);
    const OutputTensor& second = detector->outputs[1];
    EXPECT_EQ(second.name, "second");
    EXPECT_EQ(second.timeSteps, 80);
    EXPECT_EQ(second.dim1, 2);
    EXPECT_EQ(second.numClasses, 5);
    EXPECT_EQ(second.dim3, 3);
    EXPECT_EQ(second.byteSize, 40 * 2 * 5 * 3 * 4);
    EXPECT_NE(first.deviceBuffer, nullptr);
    EXPECT_NE(first.hostBuffer, nullptr);
    EXPECT_NE(second.deviceBuffer, first.deviceBuffer);
    EXPECT_NE(second.hostBuffer, first.hostBuffer);
    EXPECT_EQ(runtime.callCount("malloc"), 3);
}

TEST_F(CrnnDetector, TimeStepsAreAWholeQuarterOfTheWidth)
{
    config.width = 103;
    EXPECT_EQ(makeDetector()->outputs[0].timeSteps, 25);
}

TEST_F(CrnnDetector, GoesFromTheContextToTheRuntime)
{
    makeDetector().reset();
    const std::vector<std::string> end(runtime.calls.end() - 3, runtime.calls.end());
    EXPECT_THAT(end, ElementsAre("~context", "~engine", "~runtime"));
}

TEST_F(CrnnDetector, DestroysOnlyWhatWasMade)
{
    runtime.makesContext = false;
    makeDetector().reset();
    EXPECT_THAT(runtime.calls, ElementsAre("createRuntime", "~engine", "~runtime"));
}

TEST_F(CrnnDetector, AllDetectorsShareOneLogger)
{
    makeDetector();
    const nvinfer1::ILogger* const first = runtime.logger;
    makeDetector();
    EXPECT_EQ(runtime.logger, first);
}

TEST_F(CrnnDetector, ReadsEngineBytesAsTheyAre)
{
    const QByteArray bytes("\r\n\0\x1A\xFF\r\n", 7);
    enginePath = writeEngine(bytes);
    makeDetector();
    EXPECT_EQ(runtime.engineBytes, bytes.toStdString());
}

TEST_F(CrnnDetector, AnEmptyFileIsLeftToDeserialisationToRefuse)
{
    enginePath = writeEngine("");
    runtime.engineBytes = "not yet called";
    runtime.makesEngine = false;
    const LogCapture log;
    EXPECT_FALSE(makeDetector()->isReady());
    EXPECT_EQ(runtime.engineBytes, "");
    EXPECT_THAT(
        log.texts(google::GLOG_ERROR), ElementsAre("De-serialize CRNN trt engine failed from file: " + enginePath));
}

TEST_F(CrnnDetector, FoldersAndPipesCannotBeOpened)
{
    const std::string pipe = folder.filePath("pipe").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {folder.path().toStdString(), pipe, std::string()}) {
        enginePath = path;
        const LogCapture log;
        EXPECT_FALSE(makeDetector()->isReady());
        EXPECT_THAT(log.texts(google::GLOG_ERROR), ElementsAre("Open CRNN trt engine failed from file: " + path));
    }
    EXPECT_THAT(runtime.calls, IsEmpty());
}

TEST_F(CrnnDetector, ARuntimeOfAnotherVersionIsNoEngine)
{
    runtime.makesRuntime = false;
    const LogCapture log;
    EXPECT_FALSE(makeDetector()->isReady());
    EXPECT_THAT(
        log.texts(google::GLOG_ERROR), ElementsAre("De-serialize CRNN trt engine failed from file: " + enginePath));
}

TEST_F(CrnnDetector, TwoInputLayersAreRefusedBeforeAnyBindingIsLookedUp)
{
    config.input_layers = {"input", "more"};
    makeDetector();
    EXPECT_EQ(runtime.callCount("bindingIndex"), 0);
}

TEST_F(CrnnDetector, TheFirstMisplacedOutputIsNamed)
{
    runtime.bindingNames = {"input", "a", "b", "c"};
    config.output_layers = {"a", "c", "b"};
    const LogCapture log;
    EXPECT_FALSE(makeDetector()->isReady());
    EXPECT_THAT(log.texts(google::GLOG_ERROR), ElementsAre("Get CRNN trt engine output binding failed for layer: c"));
}

TEST_F(CrnnDetector, HoldsThreePlanesForAnEngineOfOneChannel)
{
    config.channels = 1;
    runtime.inputDims = makeDims({1, 1, 32, -1});
    const auto detector = makeDetector();
    ASSERT_TRUE(detector->isReady());
    EXPECT_EQ(runtime.callCount("malloc 40960"), 1);
    networkReads({1});
    std::vector<std::string> characters;
    EXPECT_TRUE(detector->detect(cv::Mat(32, 320, CV_8UC3, cv::Scalar(255, 0, 0)), characters));
    EXPECT_EQ(runtime.callCount("copy 40960 to device"), 1);
    // Only the first plane goes to the device.
    ASSERT_EQ(runtime.runs.back().input.size(), 32U * 320U);
    EXPECT_FLOAT_EQ(runtime.runs.back().input.back(), 1.0F);
}

TEST_F(CrnnDetector, ZeroesWhatIsBeyondThreePlanes)
{
    for (const auto& [batch, channels] : {std::pair(1, 4), std::pair(2, 3)}) {
        config.batch = batch;
        config.channels = channels;
        runtime.inputDims = makeDims({batch, channels, 32, -1});
        const auto detector = makeDetector();
        ASSERT_TRUE(detector->isReady());
        // The wide picture reaches into what is the fourth plane of the narrow one.
        for (int width : {320, 100}) {
            std::vector<std::string> characters;
            EXPECT_TRUE(detector->detect(cv::Mat(32, width, CV_8UC3, cv::Scalar::all(255)), characters));
            const std::vector<float>& input = runtime.runs.back().input;
            const std::size_t plane = std::size_t{32} * width;
            ASSERT_EQ(input.size(), plane * batch * channels);
            EXPECT_FLOAT_EQ(input[3 * plane - 1], 1.0F);
            EXPECT_THAT(std::vector<float>(input.data() + 3 * plane, input.data() + input.size()), Each(0.0F));
        }
    }
    EXPECT_EQ(runtime.callCount("malloc 245760"), 1) << "two pictures of three planes";
}

/// One way in which loading fails, and the ERROR lines that it leaves.
struct LoadingFault
{
    std::string name;
    std::function<void(RuntimeDouble&, DetectorConfig&, std::string& enginePath)> arrange;
    std::vector<std::string> errors; ///< FILE stands for the engine's path
};

std::ostream& operator<<(std::ostream& stream, const LoadingFault& fault)
{
    return stream << fault.name;
}

class CrnnLoadingFault : public CrnnDetector, public ::testing::WithParamInterface<LoadingFault>
{
};

TEST_P(CrnnLoadingFault, IsLoggedAndLeavesTheDetectorNotReady)
{
    GetParam().arrange(runtime, config, enginePath);
    LogCapture log;
    const auto detector = makeDetector();
    EXPECT_FALSE(detector->isReady());

    std::vector<std::string> expected = GetParam().errors;
    for (std::string& text : expected) {
        const std::size_t position = text.find("FILE");
        if (position != std::string::npos) {
            text.replace(position, 4, enginePath);
        }
    }
    EXPECT_EQ(log.texts(google::GLOG_ERROR), expected);
    for (const LogCapture::Line& line : log.lines()) {
        EXPECT_NE(line.text, "Initialize CRNN trt detector success.");
        EXPECT_TRUE(line.severity != google::GLOG_ERROR || line.file == "crnntrtdetector.cpp") << line;
    }

    log.clear();
    std::vector<std::string> characters = {"old"};
    EXPECT_FALSE(detector->detect(cv::Mat(32, 100, CV_8UC1, cv::Scalar(0)), characters));
    EXPECT_FALSE(detector->detect(cv::Mat(), characters));
    EXPECT_THAT(characters, IsEmpty());
    EXPECT_THAT(log.texts(google::GLOG_ERROR),
        ElementsAre(
            "CRNN trt engine had not been initialized successfully.", "Invalid input image for CRNN trt detecting."));
    EXPECT_EQ(runtime.callCount("enqueue"), 0);
}

TEST_F(CrnnDetector, HasHostMemoryForAnOutputBeforeItAsksForDeviceMemory)
{
    runtime.failingMallocs = {2};
    const auto detector = makeDetector();
    EXPECT_FALSE(detector->isReady());
    EXPECT_NE(detector->outputs[0].hostBuffer, nullptr);
    EXPECT_EQ(detector->outputs[0].deviceBuffer, nullptr);
}

const char* const outOfMemory = "Last CUDA error: out of memory, says the double";

const LoadingFault loadingFaults[] = {
    {"NoFile", [](auto&, auto&, auto& path) { path += ".missing"; }, {"Open CRNN trt engine failed from file: FILE"}},
    {"NoEngine", [](auto& runtime, auto&, auto&) { runtime.makesEngine = false; },
        {"De-serialize CRNN trt engine failed from file: FILE"}},
    {"NoContext", [](auto& runtime, auto&, auto&) { runtime.makesContext = false; },
        {"Create CRNN trt execution context failed."}},
    {"TwoInputLayers",
        [](auto&, auto& config, auto&) {
            config.input_layers = {"input", "more"};
        },
        {"Configuration for CRNN trt input/output layers error."}},
    {"NoInputLayer", [](auto&, auto& config, auto&) { config.input_layers.clear(); },
        {"Configuration for CRNN trt input/output layers error."}},
    {"TooManyOutputLayers",
        [](auto&, auto& config, auto&) {
            config.output_layers = {"output", "more"};
        },
        {"Configuration for CRNN trt input/output layers error."}},
    {"TooFewOutputLayers", [](auto&, auto& config, auto&) { config.output_layers.clear(); },
        {"Configuration for CRNN trt input/output layers error."}},
    {"NoSuchInput", [](auto&, auto& config, auto&) { config.input_layers = {"image"}; },
        {"Get CRNN trt engine input binding failed."}},
    {"InputIsAnOutput", [](auto&, auto& config, auto&) { config.input_layers = {"output"}; },
        {"Get CRNN trt engine input binding failed."}},
    {"OtherHeight", [](auto&, auto& config, auto&) { config.height = 48; },
        {"Configuration for CRNN trt input dimensions error."}},
    {"OtherChannels", [](auto&, auto& config, auto&) { config.channels = 1; },
        {"Configuration for CRNN trt input dimensions error."}},
    {"OtherBatch", [](auto&, auto& config, auto&) { config.batch = 2; },
        {"Configuration for CRNN trt input dimensions error."}},
    {"RefusedWidth", [](auto& runtime, auto&, auto&) { runtime.acceptsDimensions = false; },
        {"Configuration for CRNN trt input setBindingDimensions error."}},
    {"NoInputMemory", [](auto& runtime, auto&, auto&) { runtime.failingMallocs = {1}; },
        {"CRNN trt input cuda memory allocation failed, size = 122880 bytes", outOfMemory}},
    {"InputBeyond32Bits", [](auto&, auto& config, auto&) { config.width = std::numeric_limits<std::int32_t>::max(); },
        {"CRNN trt input cuda memory allocation failed, size = 2147483647 bytes", outOfMemory}},
    {"NoSuchOutput", [](auto&, auto& config, auto&) { config.output_layers = {"text"}; },
        {"Get CRNN trt engine output binding failed for layer: text"}},
    {"NoOutputMemory", [](auto& runtime, auto&, auto&) { runtime.failingMallocs = {2}; },
        {"CRNN trt outputoutputcuda memory allocation failed, size = 1280 bytes", outOfMemory}},
    {"OutputOfUnknownSize",
        [](auto& runtime, auto&, auto&) { runtime.outputDims = [](int, int) {
                                              return makeDims({-1, 1, 4});
                                          }; },
        {"CRNN trt outputoutputcuda memory allocation failed, size = -16 bytes", outOfMemory}},
    {"OutputBeyond32Bits",
        [](auto& runtime, auto&, auto&) {
            runtime.outputDims = [](int, int) { return makeDims({65536, 65536, 65536, 65536, 65536, 65536, 65536}); };
        },
        {"CRNN trt outputoutputcuda memory allocation failed, size = 2147483647 bytes", outOfMemory}},
    {"NoStream", [](auto& runtime, auto&, auto&) { runtime.createsStreams = false; },
        {"CRNN trt cuda stream creation failed.", "Last CUDA error: unknown error, says the double"}},
};

INSTANTIATE_TEST_SUITE_P(
    Every, CrnnLoadingFault, ::testing::ValuesIn(loadingFaults), [](const auto& fault) { return fault.param.name; });

} // namespace
