// Items from picture to verdict, through a detector whose network is scripted.

#include "scribo.h"

#include "archive/recordingpaintdevice.h"
#include "detector/runtimedouble.h"
#include "detectorregistry.h"
#include "ocrdetector.h"
#include "posecorrection.h"
#include "scriptedtool.h"
#include "workfolder.h"

#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QThreadPool>

#include <opencv2/imgproc.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <stdexcept>

namespace {

/// What the network is to see: indices into the alphabet, from 1.
using Reading = std::vector<int>;

/// Gives access to the configuration that a detector keeps for itself.
struct OpenDetector : OCRDetector
{
    static float confidenceThreshold(OCRDetector& detector)
    {
        return (detector.*(&OpenDetector::config)).confThreshold;
    }
};

/// One of its operations throws: an exception, or anything else.
class ThrowingTool : public ScriptedTool
{
public:
    std::string failing;
    bool throwsExceptions = true;

    QString removableDiskPath() override { return failAt("removableDiskPath"), ScriptedTool::removableDiskPath(); }
    QString toolIdentity() override { return failAt("toolIdentity"), ScriptedTool::toolIdentity(); }
    QString toolDirectory() override { return failAt("toolDirectory"), ScriptedTool::toolDirectory(); }
    bool savingAllowed() override { return failAt("savingAllowed"), ScriptedTool::savingAllowed(); }
    int imageWidth() override { return failAt("imageWidth"), ScriptedTool::imageWidth(); }
    int imageHeight() override { return failAt("imageHeight"), ScriptedTool::imageHeight(); }
    cv::Mat image(int index) override { return failAt("image"), ScriptedTool::image(index); }
    QList<QRectF> regions(int index) override { return failAt("regions"), ScriptedTool::regions(index); }
    bool upstreamPose(const QString& name, int index, PosePair* found) override
    {
        return failAt("upstreamPose"), ScriptedTool::upstreamPose(name, index, found);
    }

private:
    void failAt(const std::string& operation) const
    {
        if (operation != failing)
            return;
        if (throwsExceptions)
            throw std::runtime_error("no " + operation);
        throw 42;
    }
};

/// A station whose items differ: item i has the grey value 40 * i and its region begins at column 10 * i.
class ToolOfManyItems : public ScriptedTool
{
public:
    std::vector<int> askedPosesOf; ///< items

    cv::Mat image(int index) override { return cv::Mat(60, 200, CV_8UC1, cv::Scalar(40 * index)); }
    QList<QRectF> regions(int index) override { return {QRectF(10 * index, 20, 40, 20)}; }
    bool upstreamPose(const QString& name, int index, PosePair* found) override
    {
        askedPosesOf.push_back(index);
        return ScriptedTool::upstreamPose(name, index, found);
    }
};

/// A model whose alphabet is "A", "1" and "-", of which "-" is ignored. Each test has an engine name of its
/// own, since the process keeps every detector.
class Inspection : public testing::Test
{
protected:
    void SetUp() override
    {
        RuntimeDouble::reset();
        RuntimeDouble::instance().network = [this](NetworkRun& run) { see(run); };
        tool.directory = work.path("station/");
        addModel(modelFile);
        load(modelFile);
    }

    /// The engine NAME_v1.trt and its configuration with as many classes as `classes` names.
    void addModel(const QString& engine, const QByteArray& classes = R"({"name":"1I"})")
    {
        QString configuration = engine;
        work.addModelFile(engine, "engine");
        work.addModelFile(configuration.replace("_v1.trt", ".json"),
            R"({"classes":[)" + classes
                + R"(],"ignore_char":"-","alphabet":"A1-","model_infer_info":{)"
                  R"("input_dims":{"width":320,"height":32},"input_layers":["input"],"output_layers":["output"]}})");
    }

    /// A new instance for the tool, with this model.
    void load(const QString& engine) { load(engine, tool); }
    void load(const QString& engine, Tool& host)
    {
        Scribo root;
        instance.reset(root.clone(&host, false));
        choose(engine);
    }

    void choose(const QString& engine)
    {
        QJsonObject settings;
        instance->saveParams(settings);
        QJsonArray values = settings["paramsWrap"].toArray();
        values[1] = QJsonObject{{"selectedText", engine}};
        instance->loadParams({{"paramsWrap", values}});
    }

    void set(int number, const QJsonValue& value) { instance->params()->at(number - 1)->readJson({{"values", value}}); }

    QJsonValue valueOf(int number)
    {
        QJsonObject object;
        instance->params()->at(number - 1)->writeJson(object);
        return object["values"];
    }

    void compareWith(const QString& reference)
    {
        set(9, QJsonArray{false, true, false});
        set(10, reference);
    }

    /// Processes an item whose regions show these readings, in order.
    void process(int index, std::initializer_list<Reading> shown)
    {
        readings = shown;
        instance->process(&tool, index);
        EXPECT_TRUE(readings.empty()) << "fewer regions were read than expected";
    }

    QVariantList list(int index, const char* key) { return instance->resultRecord(index)[key].toList(); }

    Scribo& scribo() { return *dynamic_cast<Scribo*>(instance.get()); }

    /// The files below the station's folder once all have been written, without date and time, sorted.
    std::vector<std::string> archivedFiles() const
    {
        QThreadPool::globalInstance()->waitForDone();
        std::vector<std::string> files;
        const QDir folder(tool.directory + "AISavePic/" + modelName() + "_C1_T1");
        for (const QString sub : {"OK", "NG/ng", "NG/ng_notype"})
            for (QString file : QDir(folder.filePath(sub)).entryList(QDir::Files, QDir::Name))
                files.push_back(
                    (sub + "/" + file.replace(QRegularExpression("\\d{4}_\\d{6}_\\d{3}"), "TIME")).toStdString());
        return files;
    }

    /// The picture in a folder that holds only one.
    QImage archivedPicture(const QString& sub) const
    {
        QThreadPool::globalInstance()->waitForDone();
        const QDir folder(tool.directory + "AISavePic/" + modelName() + "_C1_T1/" + sub);
        return QImage(folder.filePath(folder.entryList(QDir::Files).value(0)));
    }

    QString modelName() const { return QString(modelFile).remove("ocr_").remove("_v1.trt"); }

    WorkFolder work;
    ScriptedTool tool;
    std::deque<Reading> readings; ///< still to be seen; an empty text when there is none
    const QString modelFile
        = QString("ocr_%1_p1_1_v1.trt").arg(testing::UnitTest::GetInstance()->current_test_info()->name());
    std::unique_ptr<ProcessorInterface> instance;

private:
    void see(NetworkRun& run)
    {
        Reading classes;
        if (!readings.empty()) {
            for (int character : readings.front()) {
                classes.push_back(character);
                classes.push_back(0); // a blank keeps equal neighbours apart
            }
            readings.pop_front();
        }
        const std::size_t timeSteps = run.outputs[0].size() / 4;
        ASSERT_LE(classes.size(), timeSteps);
        classes.resize(timeSteps);
        run.outputs[0] = scoresOf(classes);
    }
};

void expectPicture(const QImage& picture, const cv::Mat& expected)
{
    ASSERT_EQ(picture.size(), QSize(expected.cols, expected.rows));
    for (int y = 0; y < expected.rows; ++y)
        for (int x = 0; x < expected.cols; ++x)
            ASSERT_EQ(qRed(picture.pixel(x, y)), expected.at<uchar>(y, x)) << x << ", " << y;
}

const Reading a1 = {1, 2};
const Reading aa = {1, 1};

} // namespace

TEST_F(Inspection, ReadsARegion)
{
    process(0, {{1, 2, 3, 2}});
    EXPECT_TRUE(instance->isResultOk(0));
    EXPECT_TRUE(instance->isResultOk(-1));
    const QVariantMap record = instance->resultRecord(0);
    EXPECT_EQ(record["resString"], "A1-1");
    EXPECT_EQ(record["charCount"], 3) << "the ignored character is not counted";
    EXPECT_TRUE(record["defect_types"].toList().isEmpty());
    EXPECT_EQ(valueOf(12), "A1-1") << "the host shows what was read";
    EXPECT_EQ(valueOf(13), 3);
}

TEST_F(Inspection, ReadsAnEmptyRegion)
{
    process(0, {{}});
    EXPECT_TRUE(instance->isResultOk(0));
    EXPECT_EQ(instance->resultRecord(0)["charCount"], 0);
}

TEST_F(Inspection, WarmsItsModelUpBeforeTheFirstItem)
{
    ASSERT_EQ(RuntimeDouble::instance().runs.size(), 2U) << "once by the analyser, once by the plug-in";
    for (float value : RuntimeDouble::instance().runs[1].input)
        ASSERT_EQ(value, -1.0F) << "a blank picture";
}

TEST_F(Inspection, PassesAnItemWhenAllItsRegionsPass)
{
    compareWith("A1");
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30.5, 20)};
    process(0, {a1, a1});
    EXPECT_TRUE(instance->isResultOk(0));

    process(1, {aa, a1});
    EXPECT_FALSE(instance->isResultOk(1)) << "the second region does not make up for the first";
    EXPECT_FALSE(instance->isResultOk(-1));
    EXPECT_TRUE(instance->isResultOk(0));
    EXPECT_EQ(list(1, "defect_types"), (QVariantList{"AA"}));
    EXPECT_EQ(list(1, "defect_rects"), (QVariantList{QRect(10, 20, 40, 20)}));
    EXPECT_EQ(list(1, "defect_scores"), (QVariantList{1.0}));
    EXPECT_EQ(instance->resultRecord(1)["resString"], "A1") << "the last line";

    process(2, {a1, aa});
    EXPECT_EQ(list(2, "defect_rects"), (QVariantList{QRect(60, 5, 30, 20)}));
    EXPECT_EQ(scribo().okMask(), 1U);
}

TEST_F(Inspection, TakesGroupsAndIgnoredCharactersFromTheModel)
{
    compareWith("AI");
    process(0, {{1, 3, 2}});
    EXPECT_TRUE(instance->isResultOk(0)) << "1 stands for I, and the dash does not count";
    process(1, {{1, 1}});
    EXPECT_FALSE(instance->isResultOk(1));
}

TEST_F(Inspection, LearnsItsReferenceFromItems)
{
    set(9, QJsonArray{false, false, true});
    for (int index = 0; index < 6; ++index) {
        process(index, {a1});
        EXPECT_FALSE(instance->isResultOk(index)) << index;
    }
    process(6, {a1});
    EXPECT_TRUE(instance->isResultOk(6));
    process(0, {a1});
    EXPECT_TRUE(instance->isResultOk(0)) << "a new cycle keeps what has been learned";
    process(1, {aa});
    EXPECT_FALSE(instance->isResultOk(1));
}

TEST_F(Inspection, KeepsTheLinesOfEarlierItems)
{
    compareWith("A1");
    process(0, {aa});
    process(1, {{1, 2, 1}});
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"AA"}));
    EXPECT_EQ(instance->resultRecord(0)["resString"], "A1A") << "of the item processed last";
    EXPECT_EQ(list(1, "defect_types"), (QVariantList{"A1A"}));
    process(0, {a1});
    EXPECT_TRUE(list(1, "defect_types").isEmpty()) << "a new cycle";
    EXPECT_TRUE(list(0, "defect_types").isEmpty());
}

TEST_F(Inspection, TellsAFailedDetection)
{
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20)};
    RuntimeDouble& script = RuntimeDouble::instance();
    script.failingSynchronizations = {script.synchronizations + 1};
    process(0, {a1});
    EXPECT_FALSE(instance->isResultOk(0));
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
    EXPECT_EQ(list(0, "defect_rects"), (QVariantList{QRect(10, 20, 40, 20)}));
    EXPECT_EQ(list(0, "defect_scores"), (QVariantList{-1.0}));
    EXPECT_EQ(instance->resultRecord(0)["resString"], "A1") << "the other region was read all the same";

    process(1, {a1, a1});
    EXPECT_TRUE(instance->isResultOk(1)) << "the failure is over";
}

TEST_F(Inspection, CountsNothingForAnItemThatCannotBeRead)
{
    process(0, {a1});
    RuntimeDouble::instance().acceptsRuns = false;
    process(1, {});
    EXPECT_EQ(instance->resultRecord(1)["charCount"], -1);
    EXPECT_EQ(instance->resultRecord(1)["resString"], "");
    EXPECT_EQ(list(1, "defect_types"), (QVariantList{"unknown error!"}));
}

TEST_F(Inspection, TellsAPictureThatTheModelCannotRead)
{
    tool.picture = cv::Mat(60, 200, CV_8UC2, cv::Scalar::all(7));
    process(0, {});
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
    tool.picture = cv::Mat(60, 200, CV_8UC3, cv::Scalar::all(7));
    process(1, {a1});
    EXPECT_TRUE(instance->isResultOk(1));
}

TEST_F(Inspection, NamesEachModelOfACycleOnce)
{
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20)};
    process(0, {a1, a1});
    process(1, {a1, a1});
    const QJsonObject first{{"type", "检测数"}, {"model", 1}};
    EXPECT_EQ(scribo().modelEntries(), (QJsonArray{first}));

    addModel("ocr_three_p1_1_v1.trt", R"({"name":"a"},{"name":"b"},{"name":"c"})");
    load("ocr_three_p1_1_v1.trt");
    process(0, {a1, a1});
    EXPECT_EQ(scribo().modelEntries(), (QJsonArray{QJsonObject{{"type", "检测数"}, {"model", 3}}}));
    choose(modelFile);
    process(1, {a1, a1});
    EXPECT_EQ(scribo().modelEntries().size(), 2);
    EXPECT_EQ(scribo().modelEntries()[1], first);
}

TEST_F(Inspection, TellsWhyAnEngineCouldNotBeLoaded)
{
    addModel("ocr_damaged_p1_1_v1.trt");
    addModel("ocr_other_p1_1_v1.trt");
    RuntimeDouble::instance().makesEngine = false;
    load("ocr_damaged_p1_1_v1.trt");
    process(0, {});
    const QString message = "Create object detector failed from file: ./model/ocr_damaged_p1_1_v1.trt";
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{message + message + "\n"}));
    EXPECT_TRUE(scribo().modelEntries().isEmpty());
    instance->archivePictures(&tool);

    const QString other = QString(message).replace("damaged", "other");
    choose("ocr_other_p1_1_v1.trt");
    process(0, {});
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{other + other + "\n"})) << "without what the last one said";
    RuntimeDouble::instance().makesEngine = true;
    choose(modelFile);
    process(0, {a1});
    EXPECT_TRUE(instance->isResultOk(0)) << "the next choice counts";
}

TEST_F(Inspection, SharesTheDetectorWithItsCopies)
{
    const std::unique_ptr<ProcessorInterface> original = std::move(instance);
    const int engines = RuntimeDouble::instance().callCount("createRuntime");
    instance.reset(original->clone(&tool, true));
    EXPECT_EQ(RuntimeDouble::instance().callCount("createRuntime"), engines);
    process(0, {a1});
    EXPECT_TRUE(instance->isResultOk(0));
    EXPECT_FALSE(original->isResultOk(0)) << "the result is the copy's own";

    instance.reset(original->clone(&tool, false));
    process(0, {});
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"模型文件加载出错"}));
}

TEST_F(Inspection, RestoresWhatTheModelsLoadingChanged)
{
    instance->loadParams({{"paramsWrap", QJsonArray{QJsonObject(), QJsonObject{{"selectedText", modelFile}}}}});
    process(0, {a1});
    QJsonObject settings;
    instance->saveParams(settings);
    QJsonObject restored;
    const std::unique_ptr<ProcessorInterface> copy(instance->clone(&tool, true));
    copy->saveParams(restored);
    EXPECT_EQ(restored, settings) << "the last reading among the settings survives the warm-up";
}

TEST_F(Inspection, FailsAnItemWithoutAPicture)
{
    tool.picture.release();
    process(0, {});
    EXPECT_FALSE(instance->isResultOk(0)) << "of which nothing was inspected";
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
}

TEST_F(Inspection, FailsEachRegionOfAPictureThatDoesNotCome)
{
    tool.announced = cv::Size(200, 60);
    tool.picture.release();
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20)};
    process(0, {});
    EXPECT_FALSE(instance->isResultOk(0));
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!", "unknown error!"}));
    EXPECT_EQ(list(0, "defect_rects"), (QVariantList{QRect(10, 20, 40, 20), QRect(60, 5, 30, 20)}));

    tool.taughtRegions = {QRectF(10, 20, 0.5, 20)};
    process(1, {});
    EXPECT_FALSE(instance->isResultOk(1)) << "of which nothing was inspected";
}

TEST_F(Inspection, FailsAnItemWhoseRegionIsNotInItsPicture)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const double edge = tool.picture.cols;
    const QList<QRectF> regions = {{edge, 5, 40, 20}, {edge - 0.4, 5, 5, 20}, {10, 1e9, 40, 20}, {-1e9, 5, 10, nan}};
    for (int index = 0; index < regions.size(); ++index) {
        tool.taughtRegions = {regions[index]};
        process(index, {});
        EXPECT_FALSE(instance->isResultOk(index)) << "of which nothing was read";
        EXPECT_EQ(list(index, "defect_types"), (QVariantList{"unknown error!"}));
    }
    EXPECT_FALSE(instance->isResultOk(-1));
}

TEST_F(Inspection, ReadsTheOtherRegionsOfAnItemThatMissesOne)
{
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(tool.picture.cols, 5, 30, 20)};
    process(0, {a1});
    EXPECT_FALSE(instance->isResultOk(0));
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
    EXPECT_EQ(instance->resultRecord(0)["resString"], "A1");
}

TEST_F(Inspection, FailsAnItemOfAHostThatKnowsNoPictureSize)
{
    tool.announced = cv::Size(0, 0);
    process(0, {});
    EXPECT_FALSE(instance->isResultOk(0));
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
}

TEST_F(Inspection, PassesWhatCannotBeCutWhenTheModelIsDisabled)
{
    set(3, QJsonArray{false, true});
    set(4, QJsonArray{true, false});
    tool.taughtRegions = {QRectF(tool.picture.cols, 5, 30, 20)};
    process(0, {});
    tool.announced = cv::Size(200, 60);
    tool.picture.release();
    tool.taughtRegions = {QRectF(10, 20, 40, 20)};
    process(1, {});
    tool.taughtRegions = {QRectF(10, 20, 0.5, 20)};
    process(2, {});
    for (int index = 0; index < 3; ++index) {
        EXPECT_TRUE(instance->isResultOk(index));
        EXPECT_TRUE(list(index, "defect_types").isEmpty());
    }
}

TEST_F(Inspection, MovesBoxesByTheWholePartOfTheRegion)
{
    compareWith("A1");
    tool.taughtRegions = {QRectF(13.7, 4.9, 40, 20)};
    process(0, {aa});
    EXPECT_EQ(list(0, "defect_rects"), (QVariantList{QRect(13, 4, 40, 20)})) << "while the picture is cut at 14, 5";
}

TEST_F(Inspection, FailsAnItemWhoseToolThrows)
{
    ThrowingTool thrower;
    load(modelFile, thrower);
    int index = 0;
    for (const char* operation : {"regions", "image", "imageWidth", "imageHeight", "upstreamPose"}) {
        for (bool throwsExceptions : {true, false}) {
            thrower.failing = operation;
            thrower.throwsExceptions = throwsExceptions;
            instance->process(&thrower, index);
            EXPECT_FALSE(instance->isResultOk(index)) << operation;
            EXPECT_EQ(list(index, "defect_types"), (QVariantList{"unknown error!"})) << operation;
            ++index;
        }
    }
    process(index, {a1});
    EXPECT_TRUE(instance->isResultOk(index)) << "each failed item has its place before it";
}

TEST_F(Inspection, PassesAnItemWhoseArchiveThrows)
{
    set(4, QJsonArray{true, true});
    ThrowingTool thrower;
    thrower.directory = tool.directory;
    int index = 0;
    for (const char* operation : {"removableDiskPath", "toolIdentity", "toolDirectory", "savingAllowed"}) {
        for (bool throwsExceptions : {true, false}) {
            thrower.failing = operation;
            thrower.throwsExceptions = throwsExceptions;
            readings = {a1};
            instance->process(&thrower, index);
            EXPECT_TRUE(instance->isResultOk(index)) << operation;
            EXPECT_NO_THROW(instance->archivePictures(&thrower)) << operation;
            ++index;
        }
    }
    EXPECT_THAT(archivedFiles(), testing::IsEmpty());
}

TEST_F(Inspection, DrawsNothingForAToolThatThrows)
{
    ThrowingTool thrower;
    load(modelFile, thrower);
    thrower.failing = "imageHeight";
    QImage canvas(200, 60, QImage::Format_RGB32);
    QPainter painter(&canvas);
    for (bool throwsExceptions : {true, false}) {
        thrower.throwsExceptions = throwsExceptions;
        EXPECT_NO_THROW(instance->drawResult(&painter, 0));
    }
}

TEST_F(Inspection, InspectsThePictureOfTheItem)
{
    ToolOfManyItems station;
    compareWith("A1");
    for (int index = 0; index < 3; ++index) {
        readings = {aa};
        instance->process(&station, index);
        const double grey = 40.0 * index / 255.0;
        EXPECT_NEAR(RuntimeDouble::instance().runs.back().input.front(), (grey - 0.5) / 0.5, 1e-5);
        EXPECT_EQ(list(index, "defect_rects"), (QVariantList{QRect(10 * index, 20, 40, 20)}));
    }
    EXPECT_THAT(station.askedPosesOf, testing::ElementsAre(0, 1, 2));
}

TEST_F(Inspection, StartsACycleWithAnItemThatIsNotRecorded)
{
    compareWith("A1");
    process(0, {a1});
    process(1, {aa});
    tool.taughtRegions.clear();
    process(0, {});
    EXPECT_FALSE(instance->isResultOk(0)) << "what the last cycle's item was";
    EXPECT_TRUE(instance->isResultOk(-1)) << "nothing has failed";
    EXPECT_EQ(scribo().okMask(), 0U);
    EXPECT_TRUE(scribo().modelEntries().isEmpty());
    EXPECT_TRUE(list(1, "defect_types").isEmpty());
}

TEST_F(Inspection, FollowsThePose)
{
    set(4, QJsonArray{true, true});
    cv::randu(tool.picture, 0, 256);
    tool.hasPose = true;
    tool.pose = {60, 35, 0, 155, 30, 10};
    const cv::Rect region(10, 20, 100, 30);
    const auto expected = correctedRegion(tool.picture, tool.pose, region);
    ASSERT_TRUE(expected) << "moved by 95 pixels, the region leaves the picture";
    process(0, {a1});
    expectPicture(archivedPicture("OK"), *expected);
}

TEST_F(Inspection, ReadsTheUprightRegionWhereThePoseGivesNone)
{
    set(4, QJsonArray{true, true});
    cv::randu(tool.picture, 1, 256);
    tool.hasPose = true;
    tool.pose = {60, 35, 0, 63, 33, 0};
    const cv::Rect region(10, 20, 100, 30);
    ASSERT_FALSE(correctedRegion(tool.picture, tool.pose, region)) << "its corners stay on bright pixels";
    process(0, {a1});
    expectPicture(archivedPicture("OK"), tool.picture(region));
}

TEST_F(Inspection, ArchivesThePictureOfEachRegion)
{
    set(4, QJsonArray{true, true});
    compareWith("A1");
    tool.picture = cv::Mat(60, 200, CV_8UC3, cv::Scalar(200, 100, 50));
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20), QRectF(0, 0, 25, 25)};
    RuntimeDouble& script = RuntimeDouble::instance();
    const int perRun = script.synchronizations / static_cast<int>(script.runs.size());
    script.failingSynchronizations = {script.synchronizations + 2 * perRun + 1};
    process(0, {a1, aa});
    EXPECT_THAT(archivedFiles(),
        testing::ElementsAre("OK/C1_T1ROI1_TIME_A1.bmp", "NG/ng/C1_T1ROI2_TIME_AA.bmp",
            "NG/ng_notype/C1_T1ROI3_TIME_unknown error!.bmp"));
    const QImage picture = archivedPicture("OK");
    EXPECT_EQ(picture.size(), QSize(40, 20));
    EXPECT_EQ(picture.pixelColor(5, 5), QColor(200, 100, 50)) << "the host's order is red, green, blue";
}

TEST_F(Inspection, NumbersThePicturesOfEachItemByItsLines)
{
    set(4, QJsonArray{true, true});
    tool.taughtRegions = {QRectF(tool.picture.cols, 5, 30, 20), QRectF(10, 20, 40, 20)};
    process(0, {a1});
    EXPECT_THAT(archivedFiles(), testing::ElementsAre("OK/C1_T1ROI2_TIME_A1.bmp"))
        << "the region that is not in the picture has a line, but no picture";
    process(1, {a1});
    EXPECT_THAT(archivedFiles(), testing::ElementsAre("OK/C1_T1ROI2_TIME_A1.bmp", "OK/C1_T1ROI2_TIME_A1.bmp"));

    tool.announced = cv::Size(300, 60); // of which the first region lies outside the picture that comes
    tool.taughtRegions = {QRectF(250, 5, 30, 20), QRectF(0, 0, 10, 10), QRectF(10, 20, 40, 20)};
    process(2, {aa, aa});
    EXPECT_THAT(archivedFiles(),
        testing::IsSupersetOf({"OK/C1_T1ROI2_TIME_AA.bmp", "OK/C1_T1ROI3_TIME_AA.bmp"}));
}

TEST_F(Inspection, ArchivesWithoutReadingWhenTheModelIsDisabled)
{
    set(3, QJsonArray{false, true});
    set(4, QJsonArray{true, false});
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20)};
    const std::size_t runs = RuntimeDouble::instance().runs.size();
    process(0, {});
    EXPECT_TRUE(instance->isResultOk(0));
    EXPECT_EQ(RuntimeDouble::instance().runs.size(), runs);
    EXPECT_THAT(archivedFiles(), testing::ElementsAre("OK/C1_T1ROI1_TIME_.bmp", "OK/C1_T1ROI2_TIME_.bmp"));
    EXPECT_TRUE(scribo().modelEntries().isEmpty());
}

TEST_F(Inspection, PreparesTheModelsFolders)
{
    instance->archivePictures(&tool);
    const QDir folder(tool.directory + "AISavePic/" + modelName() + "_C1_T1");
    for (const char* sub : {"OK", "NG/ng", "NG/ng_notype"})
        EXPECT_TRUE(folder.exists(sub)) << sub;
    EXPECT_THAT(archivedFiles(), testing::IsEmpty());
}

TEST_F(Inspection, HandsTheSmallestScoreLimitToTheDetector)
{
    OCRDetector& detector = *createDetector(DetectorKind::crnnTrt, ("./model/" + modelFile).toStdString(), {});
    const auto limit = [](double lowest) {
        return QVariantMap{{"name", "a"}, {"flag", true}, {"values", QVariantList{lowest, 0.01, 0.02, 0.03}}};
    };
    const auto threshold = [&](const QVariantList& limits) {
        scribo().setProperty("scoreLimits", limits);
        instance->archivePictures(&tool);
        return OpenDetector::confidenceThreshold(detector);
    };
    EXPECT_EQ(OpenDetector::confidenceThreshold(detector), 0.5F) << "the model's, until the host asks";
    instance->archivePictures(&tool);
    EXPECT_EQ(OpenDetector::confidenceThreshold(detector), 1.0F) << "without limits";
    EXPECT_EQ(threshold({limit(0.7), limit(0.25), limit(0.5)}), 0.25F);
    EXPECT_EQ(threshold({limit(1.5)}), 1.0F);
    EXPECT_EQ(threshold({limit(std::numeric_limits<double>::quiet_NaN()), limit(0.1)}), 0.1F);
    EXPECT_EQ(threshold({QVariantMap()}), 0.0F) << "a record without values has zeros";
    EXPECT_EQ(threshold({}), 1.0F);
    scribo().setProperty("scoreLimits", QVariantList{limit(0.25)});
    scribo().setProperty("other", 1);
    instance->archivePictures(nullptr);
    EXPECT_EQ(OpenDetector::confidenceThreshold(detector), 0.25F) << "also without a tool";
}

TEST_F(Inspection, DrawsAnItemsLines)
{
    compareWith("A1");
    tool.taughtRegions = {QRectF(10, 20, 100, 30)};
    process(0, {{1, 2, 1}});
    QImage canvas(200, 60, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    instance->drawResult(&painter, 1);
    EXPECT_EQ(painter.pen().style(), Qt::SolidLine);
    EXPECT_EQ(canvas.pixelColor(10, 30), QColor(Qt::black)) << "item 1 has no result";
    instance->drawResult(&painter, 0);
    EXPECT_EQ(canvas.pixelColor(10, 30), QColor("#FF5252")) << "the box of a line that is NG";

    RecordingPaintDevice device;
    QPainter recorder(&device);
    instance->drawResult(&recorder, 0);
    std::vector<std::string> characters;
    for (const PaintedItem& item : device.items())
        if (item.rect.isNull())
            characters.push_back((item.text + item.pen.color().name(QColor::HexRgb)).toStdString());
    EXPECT_THAT(characters, testing::ElementsAre("A#4caf50", "1#4caf50", "A#ff5252"))
        << "the one that the reference has not";
}
