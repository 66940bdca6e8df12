#include "ocranalyser.h"

#include "detectorregistry.h"
#include "ocrdetector.h"

#include "logcapture.h"
#include "qtlogcapture.h"
#include "runtimedouble.h"
#include "threadlimit.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const char* const goodConfig = R"({
    "classes": [{"name": "0O", "as_ok": true, "ok_num": 2}, {"name": "1Il"}],
    "ignore_char": "-",
    "alphabet": "AB数",
    "model_infer_info": {
        "input_dims": {"width": 320, "height": 32},
        "input_layers": ["input"],
        "output_layers": ["output"]
    }
})";

/// A folder of model packages before the runtime double. Every test has engine paths of its own, so
/// its detectors are its own, too.
class Analyser : public ::testing::Test
{
protected:
    void SetUp() override
    {
        RuntimeDouble::reset();
        networkReads({1, 0, 3, 2});
    }

    QString write(const QString& name, const QByteArray& bytes)
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }

    QString writeModel(const QByteArray& config = goodConfig)
    {
        write("ocr_printed_p1_1.json", config);
        return write("ocr_printed_p1_1_v1.trt", "serialised engine");
    }

    void networkReads(const std::vector<int>& classes)
    {
        runtime.network = [classes](NetworkRun& run) {
            const std::vector<float> scores = scoresOf(classes);
            std::copy(scores.begin(), scores.end(), run.outputs[0].begin());
        };
    }

    /// An analyser that cannot be used, and the message that it logs and keeps.
    void expectUnusable(const QString& path, const std::string& message, const char* step)
    {
        log.take();
        OCRAnalyser analyser(path);
        EXPECT_FALSE(analyser.isInitialized());
        EXPECT_EQ(analyser.errorMessage().toStdString(), message);
        EXPECT_EQ(analyser.detector(), nullptr);
        const std::vector<QtLogCapture::Line> lines = log.take();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front(),
            (QtLogCapture::Line{QtInfoMsg, "Initialize ocr analyser from " + path.toStdString(), "", ""}));
        EXPECT_EQ(lines.back(), (QtLogCapture::Line{QtCriticalMsg, message, "", ""}));
        EXPECT_EQ(lines.back().file, "ocranalyser.cpp");
        EXPECT_THAT(lines.back().function, HasSubstr(std::string("OCRAnalyser::") + step));
        const auto isCritical = [](const QtLogCapture::Line& line) { return line.type == QtCriticalMsg; };
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isCritical), 1);

        std::vector<SOrgAI_ResInfo> results(2);
        EXPECT_EQ(analyser.execute(cv::Mat(8, 8, CV_8UC1, cv::Scalar(0)), results), -2);
        EXPECT_TRUE(results.empty());
        EXPECT_EQ(analyser.errorMessage(), "Detector had not been initialized properly.");
        EXPECT_THAT(log.take(), IsEmpty());
    }

    RuntimeDouble& runtime = RuntimeDouble::instance();
    QtLogCapture log;
    QTemporaryDir folder;
    std::vector<SOrgAI_ResInfo> results;
};

QtLogCapture::Line info(const std::string& text)
{
    return {QtInfoMsg, text, "", ""};
}

TEST_F(Analyser, LoadsAndWarmsUpAModel)
{
    const QString path = writeModel();
    const LogCapture detectorLog;
    const OCRAnalyser analyser(path);
    EXPECT_TRUE(analyser.isInitialized());
    EXPECT_TRUE(analyser.errorMessage().isEmpty());
    EXPECT_EQ(analyser.modelName(), "printed_p1_1");
    EXPECT_EQ(analyser.ignoreChar(), "-");
    ASSERT_EQ(analyser.classes().size(), 2U);
    EXPECT_EQ(analyser.classes()[0].name, "0O");
    EXPECT_TRUE(analyser.classes()[0].as_ok);
    EXPECT_EQ(analyser.classes()[0].ok_num, 2);
    EXPECT_EQ(analyser.classes()[1].name, "1Il");
    ASSERT_NE(analyser.detector(), nullptr);
    EXPECT_TRUE(analyser.detector()->isReady());
    EXPECT_EQ(detectorLog.count("CRNN trt detect with image size: 100x100x3"), 1);
    ASSERT_EQ(runtime.runs.size(), 1U);
    EXPECT_EQ(runtime.runs[0].inputDims.d[3], 32);
    EXPECT_THAT(runtime.runs[0].input, Each(-1.0F)) << "black, so that every start does the same";
}

TEST_F(Analyser, LogsItsStart)
{
    const QString path = writeModel();
    const OCRAnalyser analyser(path);
    const std::vector<QtLogCapture::Line> lines = log.take();
    EXPECT_THAT(lines,
        ElementsAre(info("Initialize ocr analyser from " + path.toStdString()),
            info("Model config info: 2 classes, input width 320, height 32, channels 3, batch 1, letter_box false"),
            info("Use anchor-free configuration."), info("Warm up detector with first dummy detection"),
            info("Initialize ocr analyser from " + path.toStdString() + " successfully.")));
    const char* const steps[]
        = {"OCRAnalyser::OCRAnalyser", "loadConfigFile", "loadConfigFile", "initDetector", "OCRAnalyser::OCRAnalyser"};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].file, "ocranalyser.cpp");
        EXPECT_THAT(lines[i].function, HasSubstr(steps[i]));
    }
}

TEST_F(Analyser, AModelWithMasksIsNotAnchorFree)
{
    QByteArray config = goodConfig;
    config.replace(R"("output_layers")", R"("letter_box": true, "anchors": {"mask": [[0]]}, "output_layers")");
    const OCRAnalyser analyser(writeModel(config));
    EXPECT_TRUE(analyser.isInitialized());
    const std::vector<QtLogCapture::Line> lines = log.take();
    EXPECT_EQ(lines[1],
        info("Model config info: 2 classes, input width 320, height 32, channels 3, batch 1, letter_box true"));
    EXPECT_EQ(lines[2], info("Warm up detector with first dummy detection"));
}

TEST_F(Analyser, NeedsAnEngineFile)
{
    for (const QString& path : {folder.filePath("ocr_printed_p1_1_v1.trt"), QString()}) {
        expectUnusable(path, "Can not load model from file: " + path.toStdString(), "parseConfigs");
    }
}

TEST_F(Analyser, NeedsANameOfFivePieces)
{
    for (const char* name : {"a_b_c_d.trt", "a_b_c_d_e_f.trt", "model.trt"}) {
        expectUnusable(write(name, "engine"), "model file format error.", "parseConfigs");
    }
}

TEST_F(Analyser, DropsEmptyPiecesOfTheName)
{
    write("a_b_c_d.json", goodConfig);
    const OCRAnalyser analyser(write("a__b_c_d_e.trt", "engine"));
    EXPECT_TRUE(analyser.isInitialized());
    EXPECT_EQ(analyser.modelName(), "b_c_d");
}

TEST_F(Analyser, NeedsAConfiguration)
{
    const QString engine = write("a_b_c_d_e.trt", "engine");
    const std::string config = folder.filePath("a_b_c_d.json").toStdString();
    expectUnusable(engine, "Can not open config file: " + config, "loadConfigFile");
    write("a_b_c_d.json", R"({"classes": [)");
    expectUnusable(engine, "Parse config file " + config + " failed: unterminated array", "loadConfigFile");
    write("a_b_c_d.json", "[]");
    expectUnusable(
        engine, "Invalid config: there should be at least 1 class, or input size greater than 0.", "loadConfigFile");
}

TEST_F(Analyser, SummarisesAConfigurationOnlyOnceItHasClassesAndASize)
{
    const OCRAnalyser invalid(
        writeModel(R"({"classes": [], "model_infer_info": {"input_dims": {"width": 9, "height": 9}}})"));
    EXPECT_EQ(log.take().size(), 2U);

    QByteArray config = goodConfig;
    config.replace(R"("output_layers")", R"("anchors": {"mask": [[0], [1]]}, "output_layers")");
    const QString path = writeModel(config);
    expectUnusable(path, "Incompatible size of output layers and anchors mask", "loadConfigFile");
    const OCRAnalyser incompatible(path);
    const std::vector<QtLogCapture::Line> lines = log.take();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[1].text, HasSubstr("Model config info: 2 classes"));
}

TEST_F(Analyser, KnowsOnlyTensorRtEngines)
{
    write("a_b_c_d.json", goodConfig);
    expectUnusable(write("a_b_c_d_e.onnx", "model"), "Unsupported engine type: onnx", "initDetector");
    expectUnusable(write("a_b_c_d_e.TRT", "engine"), "Unsupported engine type: TRT", "initDetector");
    expectUnusable(write("a_b_c_d_e", "engine"), "Unsupported engine type: ", "initDetector");
    EXPECT_THAT(runtime.calls, IsEmpty());
}

TEST_F(Analyser, NeedsAnEngineThatLoads)
{
    runtime.makesEngine = false;
    const QString path = writeModel();
    expectUnusable(path, "Create object detector failed from file: " + path.toStdString(), "initDetector");
}

TEST_F(Analyser, ADetectorThatFailedToLoadStaysFailed)
{
    runtime.makesEngine = false;
    const QString path = writeModel();
    const OCRAnalyser first(path);
    runtime.makesEngine = true;
    expectUnusable(path, "Create object detector failed from file: " + path.toStdString(), "initDetector");
    EXPECT_EQ(runtime.callCount("createRuntime"), 1);
}

TEST_F(Analyser, SurvivesThatNoThreadIsToBeHad)
{
    const QString path = writeModel();
    {
        const NoMoreThreads noMoreThreads;
        expectUnusable(path, "Create object detector failed from file: " + path.toStdString(), "initDetector");
    }
    EXPECT_TRUE(OCRAnalyser(path).isInitialized());
}

TEST_F(Analyser, NeedsADetectorThatDetects)
{
    runtime.acceptsRuns = false;
    expectUnusable(writeModel(), "Internal error, the detector does not work properly.", "initDetector");
}

TEST_F(Analyser, AnAnalyserOfADetectorThatFailedOnceMaySucceed)
{
    runtime.acceptsRuns = false;
    const QString path = writeModel();
    EXPECT_FALSE(OCRAnalyser(path).isInitialized());
    runtime.acceptsRuns = true;
    EXPECT_TRUE(OCRAnalyser(path).isInitialized());
    EXPECT_EQ(runtime.callCount("createRuntime"), 1);
}

TEST_F(Analyser, ReadsTheWholeImageIntoOneRecord)
{
    OCRAnalyser analyser(writeModel());
    log.take();
    results.resize(3);
    EXPECT_EQ(analyser.execute(cv::Mat(40, 123, CV_8UC3, cv::Scalar()), results), 1);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].text,
        "A\xE6\x95\xB0"
        "B");
    EXPECT_EQ(results[0].score, 1.0);
    EXPECT_EQ(results[0].classIndex, 0);
    EXPECT_EQ(results[0].rect, cv::Rect(0, 0, 123, 40));
    EXPECT_FALSE(results[0].isOk);
    EXPECT_TRUE(analyser.errorMessage().isEmpty());
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Analyser, AnEmptyReadingIsARecordToo)
{
    networkReads({0});
    OCRAnalyser analyser(writeModel());
    EXPECT_EQ(analyser.execute(cv::Mat(40, 123, CV_8UC1, cv::Scalar()), results), 1);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].text, "");
    EXPECT_EQ(results[0].rect, cv::Rect(0, 0, 123, 40));
}

TEST_F(Analyser, RefusesImagesThatAreEmptyOrOfOtherChannels)
{
    OCRAnalyser analyser(writeModel());
    log.take();
    for (const cv::Mat& image :
        {cv::Mat(), cv::Mat(0, 4, CV_8UC3), cv::Mat(8, 8, CV_8UC2), cv::Mat(8, 8, CV_8UC4), cv::Mat(8, 8, CV_8UC(7))}) {
        results.resize(1);
        EXPECT_EQ(analyser.execute(image, results), -1);
        EXPECT_TRUE(results.empty());
        EXPECT_EQ(analyser.errorMessage(), "Invalid image data.");
        const std::vector<QtLogCapture::Line> lines = log.take();
        EXPECT_THAT(lines, ElementsAre(QtLogCapture::Line{QtWarningMsg, "Invalid image data.", "", ""}));
        EXPECT_EQ(lines[0].file, "ocranalyser.cpp");
        EXPECT_THAT(lines[0].function, HasSubstr("OCRAnalyser::execute"));
    }
    EXPECT_TRUE(analyser.isInitialized());
    EXPECT_EQ(analyser.execute(cv::Mat(40, 123, CV_8UC1, cv::Scalar()), results), 1);
}

TEST_F(Analyser, TheImageIsLookedAtBeforeTheState)
{
    OCRAnalyser analyser(folder.filePath("missing_a_b_c_d.trt"));
    EXPECT_EQ(analyser.execute(cv::Mat(), results), -1);
}

TEST_F(Analyser, ImagesOf16BitsReachTheDetector)
{
    OCRAnalyser analyser(writeModel());
    EXPECT_EQ(analyser.execute(cv::Mat(40, 123, CV_16UC1, cv::Scalar(300)), results), 1);
    EXPECT_NEAR(runtime.runs.back().input[0], 300 / 127.5 - 1, 1e-5);
}

TEST_F(Analyser, AFailedDetectionIsReportedAndTheNextOneRuns)
{
    OCRAnalyser analyser(writeModel());
    log.take();
    const cv::Mat image(40, 123, CV_8UC1, cv::Scalar());
    runtime.acceptsRuns = false;
    results.resize(1);
    EXPECT_EQ(analyser.execute(image, results), -3);
    EXPECT_TRUE(results.empty());
    EXPECT_EQ(analyser.errorMessage(), "Internal error, detection failed.");
    const std::vector<QtLogCapture::Line> lines = log.take();
    EXPECT_THAT(lines, ElementsAre(QtLogCapture::Line{QtCriticalMsg, "Internal error, detection failed.", "", ""}));
    EXPECT_THAT(lines[0].function, HasSubstr("OCRAnalyser::execute"));

    runtime.acceptsRuns = true;
    EXPECT_TRUE(analyser.isInitialized());
    EXPECT_EQ(analyser.execute(image, results), 1);
    EXPECT_EQ(results.size(), 1U);
}

TEST_F(Analyser, AClassThatTheAlphabetLacksFailsItsOwnReadingOnly)
{
    const QString path = writeModel();
    OCRAnalyser analyser(path);
    OCRAnalyser sharing(path);
    ASSERT_EQ(sharing.detector(), analyser.detector());
    const cv::Mat image(8, 8, CV_8UC1, cv::Scalar(0));

    // A fifth class, for which the alphabet has no character, beside one that it has.
    const auto fourClasses = runtime.outputDims;
    runtime.outputDims = [](int, int width) { return makeDims({width / 4, 1, 5}); };
    runtime.network = [](NetworkRun& run) {
        for (const std::size_t step : {0, 1, 3, 5}) {
            run.outputs[0][step * 5 + 4] = 0.9F;
        }
        run.outputs[0][4 * 5 + 1] = 0.9F;
    };
    for (int reading = 0; reading < 2; ++reading) {
        const LogCapture detectorLog;
        log.take();
        results.resize(1);
        EXPECT_EQ(analyser.execute(image, results), -3);
        EXPECT_THAT(results, IsEmpty());
        EXPECT_EQ(analyser.errorMessage(), "Internal error, detection failed.");
        EXPECT_THAT(
            log.take(), ElementsAre(QtLogCapture::Line{QtCriticalMsg, "Internal error, detection failed.", "", ""}));
        EXPECT_THAT(detectorLog.texts(google::GLOG_ERROR),
            ElementsAre("decodeOCR has no alphabet entry for class: 4", "CRNN trt request inference failed."));
    }

    runtime.outputDims = fourClasses;
    networkReads({1});
    for (OCRAnalyser* const later : {&analyser, &sharing}) {
        EXPECT_EQ(later->execute(image, results), 1);
        ASSERT_EQ(results.size(), 1U);
        EXPECT_EQ(results[0].text, "A");
    }
    EXPECT_TRUE(OCRAnalyser(path).isInitialized());
}

TEST_F(Analyser, WhatTheImageLibraryRaisesIsAFailedDetection)
{
    OCRAnalyser analyser(writeModel());
    log.take();
    EXPECT_EQ(analyser.execute(cv::Mat(64, 100, CV_32SC1, cv::Scalar(1)), results), -3);
    EXPECT_TRUE(results.empty());
    const std::vector<QtLogCapture::Line> lines = log.take();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].type, QtWarningMsg);
    EXPECT_THAT(lines[0].text, HasSubstr("Detection raised: OpenCV"));
    EXPECT_EQ(lines[1].text, "Internal error, detection failed.");
    const int sizes[] = {4, 4, 4};
    EXPECT_EQ(analyser.execute(cv::Mat(3, sizes, CV_8UC1, cv::Scalar(1)), results), -3);
}

TEST_F(Analyser, AnalysersOfOneEngineShareItsDetector)
{
    const QString path = writeModel();
    OCRAnalyser first(path);
    // The second one's configuration is read, but the detector keeps the first one's.
    QByteArray config = goodConfig;
    config.replace("AB数", "XYZ");
    config.replace(R"("ignore_char": "-")", R"("ignore_char": "+")");
    writeModel(config);
    OCRAnalyser second(path);
    EXPECT_EQ(second.detector(), first.detector());
    EXPECT_EQ(runtime.callCount("createRuntime"), 1);
    EXPECT_EQ(runtime.runs.size(), 2U);
    EXPECT_EQ(second.ignoreChar(), "+");
    EXPECT_EQ(second.execute(cv::Mat(40, 123, CV_8UC1, cv::Scalar()), results), 1);
    EXPECT_EQ(results[0].text,
        "A\xE6\x95\xB0"
        "B");
}

TEST_F(Analyser, TheDetectorOutlivesTheAnalyser)
{
    const QString path = writeModel();
    auto analyser = std::make_unique<OCRAnalyser>(path);
    OCRDetector* const detector = analyser->detector();
    analyser.reset();
    std::vector<std::string> characters;
    EXPECT_TRUE(detector->detect(cv::Mat(40, 123, CV_8UC1, cv::Scalar()), characters));
    EXPECT_EQ(OCRAnalyser(path).detector(), detector);
}

TEST_F(Analyser, TheSamePathWrittenAnotherWayIsAnotherDetector)
{
    const QString path = writeModel();
    const QString sameFile = folder.path() + "/./" + QFileInfo(path).fileName();
    EXPECT_NE(OCRAnalyser(sameFile).detector(), OCRAnalyser(path).detector());
    EXPECT_EQ(runtime.callCount("createRuntime"), 2);
}

TEST_F(Analyser, PathsBeyondAsciiReachTheDetector)
{
    QDir(folder.path()).mkdir("模型");
    write("模型/ocr_印_p1_1.json", goodConfig);
    const OCRAnalyser analyser(write("模型/ocr_印_p1_1_v1.trt", "engine bytes"));
    EXPECT_TRUE(analyser.isInitialized());
    EXPECT_EQ(analyser.modelName(), "印_p1_1");
    EXPECT_EQ(runtime.engineBytes, "engine bytes");
}

TEST_F(Analyser, AFolderNamedLikeAnEngineIsNoModel)
{
    write("a_b_c_d.json", goodConfig);
    QDir(folder.path()).mkdir("a_b_c_d_e.trt");
    const QString path = folder.filePath("a_b_c_d_e.trt");
    expectUnusable(path, "Create object detector failed from file: " + path.toStdString(), "initDetector");
}

TEST_F(Analyser, AnInputLargerThanMemoryIsAFaultNotACrash)
{
    QByteArray config = goodConfig;
    config.replace(R"("width": 320, "height": 32)", R"("width": 2147483647, "height": 32)");
    const QString path = writeModel(config);
    expectUnusable(path, "Create object detector failed from file: " + path.toStdString(), "initDetector");
}

TEST_F(Analyser, RegistersAPlainDetectorForAnUnknownKind)
{
    for (const int kind : {0, 2, -1}) {
        const std::string path = folder.filePath(QString::number(kind)).toStdString();
        OCRDetector* const detector = createDetector(kind, path, DetectorConfig());
        ASSERT_NE(detector, nullptr);
        EXPECT_FALSE(detector->isReady());
        const LogCapture detectorLog;
        std::vector<std::string> characters;
        EXPECT_FALSE(detector->detect(cv::Mat(4, 4, CV_8UC1), characters));
        EXPECT_EQ(detectorLog.count("Object detection not supported."), 1);
        // Once registered, the path decides, not the kind.
        EXPECT_EQ(createDetector(DetectorKind::crnnTrt, path, DetectorConfig()), detector);
    }
    EXPECT_THAT(runtime.calls, IsEmpty());
}

} // namespace
