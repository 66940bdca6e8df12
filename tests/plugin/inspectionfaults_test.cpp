// Items that cannot be inspected: what the operator is told, and that none of them passes.

#include "inspectionfixture.h"

#include "qtlogcapture.h"

#include <QImage>
#include <QPainter>

#include <limits>
#include <stdexcept>

namespace {

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
        if (operation != failing) {
            return;
        }
        if (throwsExceptions) {
            throw std::runtime_error("no " + operation);
        }
        throw 42;
    }
};

} // namespace

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

TEST_F(Inspection, TurnsAnOpenCvExceptionIntoAMessageLine)
{
    tool.announced = cv::Size(200, 60); // larger than the picture that comes
    tool.picture = cv::Mat(10, 10, CV_8UC1, cv::Scalar(0));
    tool.taughtRegions = {QRectF(0, 0, 100, 30), QRectF(0, 0, 5, 5)};
    process(0, {a1});
    EXPECT_FALSE(instance->isResultOk(0));
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
    EXPECT_EQ(list(0, "defect_rects"), (QVariantList{QRect(0, 0, 100, 30)}));
    EXPECT_EQ(instance->resultRecord(0)["resString"], "A1");
}

TEST_F(Inspection, FailsAnItemWhoseRegionIsNotInItsPicture)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const double edge = tool.picture.cols;
    const QList<QRectF> regions = {{edge, 5, 40, 20}, {edge - 0.4, 5, 5, 20}, {10, 1e9, 40, 20}, {-1e9, 5, 10, nan}};
    const QList<QRect> boxes = {{200, 5, 40, 20}, {200, 5, 5, 20}, {10, 1000000000, 40, 20}, {-1000000000, 5, 10, 0}};
    for (int index = 0; index < regions.size(); ++index) {
        tool.taughtRegions = {regions[index]};
        process(index, {});
        EXPECT_FALSE(instance->isResultOk(index)) << "of which nothing was read";
        EXPECT_EQ(list(index, "defect_types"), (QVariantList{"unknown error!"}));
        EXPECT_EQ(list(index, "defect_rects"), (QVariantList{boxes[index]}));
        EXPECT_EQ(list(index, "defect_scores"), (QVariantList{-1.0}));
    }
    EXPECT_FALSE(instance->isResultOk(-1));
}

TEST_F(Inspection, GivesEachRegionThatIsNotInThePictureABoxOfItsOwn)
{
    tool.taughtRegions = {QRectF(300.5, 5, 30, 20), QRectF(10, 20, 40, 20), QRectF(1e300, -1e300, 30, 20)};
    process(0, {a1});
    EXPECT_EQ(list(0, "defect_rects"),
        (QVariantList{
            QRect(300, 5, 30, 20), QRect(std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), 0, 20)}));
    QImage canvas(200, 60, QImage::Format_RGB32);
    QPainter painter(&canvas);
    instance->drawResult(&painter, 0);
}

TEST_F(Inspection, TellsOfTheModelWhereNoneIsLoadedWhateverElseIsWrong)
{
    const QVariant message = "模型文件加载出错";
    Scribo root;
    instance.reset(root.clone(&tool, false));
    tool.taughtRegions = {QRectF(tool.picture.cols, 5, 30, 20), QRectF(10, 20, 40, 20)};
    tool.hasPose = true;
    tool.pose.currentX = std::numeric_limits<float>::quiet_NaN();
    process(0, {});
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{message, message}));
    EXPECT_EQ(list(0, "defect_rects"), (QVariantList{QRect(200, 5, 30, 20), QRect(10, 20, 40, 20)}));

    addModel("ocr_damaged_p1_1_v1.trt");
    RuntimeDouble::instance().makesEngine = false;
    load("ocr_damaged_p1_1_v1.trt");
    process(0, {});
    const QString fault = "Create object detector failed from file: ./model/ocr_damaged_p1_1_v1.trt";
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{fault + fault + "\n", fault + fault + "\n"}));
}

TEST_F(Inspection, FailsEachRegionOfAPartWhosePoseIsNotFinite)
{
    set(4, QJsonArray{true, true});
    tool.hasPose = true;
    tool.taughtRegions = {QRectF(10, 20, 40, 20), QRectF(60, 5, 30, 20)};
    const std::size_t runs = RuntimeDouble::instance().runs.size();
    int index = 0;
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        for (float PosePair::*const number : {&PosePair::taughtAngle, &PosePair::currentX}) {
            tool.pose = PosePair();
            tool.pose.*number = value;
            QtLogCapture log;
            process(index, {});
            EXPECT_FALSE(instance->isResultOk(index)) << "though something lies upright in the region";
            EXPECT_EQ(list(index, "defect_types"), (QVariantList{"unknown error!", "unknown error!"}));
            EXPECT_EQ(list(index, "defect_rects"), (QVariantList{QRect(10, 20, 40, 20), QRect(60, 5, 30, 20)}));
            EXPECT_EQ(list(index, "defect_scores"), (QVariantList{-1.0, -1.0}));
            const std::string line = "The pose of item " + std::to_string(index) + " is not finite";
            EXPECT_THAT(log.take(),
                testing::ElementsAre(
                    QtLogCapture::Line{QtWarningMsg, line, "", ""}, QtLogCapture::Line{QtWarningMsg, line, "", ""}));
            ++index;
        }
    }
    EXPECT_EQ(RuntimeDouble::instance().runs.size(), runs);
    EXPECT_THAT(archivedFiles(), testing::IsEmpty());

    tool.pose = PosePair();
    process(index, {a1, a1});
    EXPECT_TRUE(instance->isResultOk(index));
    set(3, QJsonArray{false, true});
    tool.pose.currentX = std::numeric_limits<float>::quiet_NaN();
    process(index + 1, {});
    EXPECT_TRUE(instance->isResultOk(index + 1)) << "a disabled model passes everything";
}

TEST_F(Inspection, FailsAnItemWithoutATool)
{
    QtLogCapture log;
    instance->process(nullptr, 0);
    EXPECT_THAT(log.take(),
        testing::ElementsAre(QtLogCapture::Line{QtWarningMsg, "Item 0 was handed over without a tool", "", ""}));
    EXPECT_FALSE(instance->isResultOk(0));
    EXPECT_FALSE(instance->isResultOk(-1));
    EXPECT_EQ(list(0, "defect_types"), (QVariantList{"unknown error!"}));
    EXPECT_EQ(list(0, "defect_scores"), (QVariantList{-1.0}));
    EXPECT_EQ(instance->resultRecord(0)["charCount"], -1);
    EXPECT_EQ(instance->resultRecord(0)["resString"], "");
    EXPECT_EQ(scribo().okMask(), 0U);

    process(1, {a1});
    EXPECT_TRUE(instance->isResultOk(1)) << "each item has its place";
}

TEST_F(Inspection, SaysThatAllRegionsOfAnItemWereSkipped)
{
    tool.taughtRegions = {QRectF(10, 20, 0.5, 20), QRectF(10, 20, -40, -20)};
    QtLogCapture log;
    process(0, {});
    EXPECT_TRUE(instance->isResultOk(0)) << "there was nothing to read";
    EXPECT_TRUE(list(0, "defect_types").isEmpty());
    EXPECT_THAT(log.take(),
        testing::ElementsAre(QtLogCapture::Line{
            QtWarningMsg, "Nothing of item 0 was inspected: all its regions are below one pixel", "", ""}));

    tool.taughtRegions.append(QRectF(10, 20, 40, 20));
    process(1, {a1});
    EXPECT_THAT(log.take(), testing::IsEmpty()) << "one was inspected";
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
