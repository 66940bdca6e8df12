// Items from picture to verdict, through a detector whose network is scripted.

#include "inspectionfixture.h"

#include "detectorregistry.h"
#include "ocrdetector.h"

#include <limits>

namespace {

/// Gives access to the configuration that a detector keeps for itself.
struct OpenDetector : OCRDetector
{
    static float confidenceThreshold(OCRDetector& detector)
    {
        return (detector.*(&OpenDetector::config)).confThreshold;
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
    for (float value : RuntimeDouble::instance().runs[1].input) {
        ASSERT_EQ(value, -1.0F) << "a blank picture";
    }
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

TEST_F(Inspection, MovesBoxesByTheWholePartOfTheRegion)
{
    compareWith("A1");
    tool.taughtRegions = {QRectF(13.7, 4.9, 40, 20)};
    process(0, {aa});
    EXPECT_EQ(list(0, "defect_rects"), (QVariantList{QRect(13, 4, 40, 20)})) << "while the picture is cut at 14, 5";
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
