#include "scribo.h"

#include "scriptedtool.h"
#include "workfolder.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <climits>

namespace {

/// The plug-in in a working directory of its own, without a model that could be read.
class WithoutModel : public testing::Test
{
protected:
    std::unique_ptr<ProcessorInterface> makeInstance(const QString& model = {})
    {
        Scribo root;
        std::unique_ptr<ProcessorInterface> instance(root.clone(&tool, false));
        if (!model.isEmpty()) {
            choose(*instance, model);
        }
        return instance;
    }

    static void choose(ProcessorInterface& processor, const QString& model)
    {
        QJsonObject settings;
        processor.saveParams(settings);
        QJsonArray values = settings["paramsWrap"].toArray();
        values[1] = QJsonObject{{"selectedText", model}};
        processor.loadParams({{"paramsWrap", values}});
    }

    static void setValue(ProcessorInterface& processor, int number, const QJsonValue& value)
    {
        processor.params()->at(number - 1)->readJson({{"values", value}});
    }

    static QString textOf(ProcessorInterface& processor, int index, int line = 0)
    {
        return processor.resultRecord(index)["defect_types"].toList().value(line).toString();
    }

    WorkFolder work;
    ScriptedTool tool;
};

} // namespace

TEST_F(WithoutModel, IntroducesItself)
{
    Scribo scribo;
    EXPECT_EQ(scribo.pluginId(), "com.qrn.brightfield.poc.Scribo");
    EXPECT_EQ(scribo.displayName(), "Scribo");
    EXPECT_EQ(scribo.version(), "V1.4");
    EXPECT_EQ(scribo.description(), " ");
    EXPECT_EQ(scribo.defectTypeNames(), "瑕疵/污点");
    EXPECT_EQ(scribo.capabilityFlags(), 2063U);
    const LimitPairs limits = scribo.limitPairs();
    for (const auto& pair : limits.pair) {
        EXPECT_EQ(pair.minimum, -1);
        EXPECT_EQ(pair.maximum, 99);
    }
}

TEST_F(WithoutModel, CastsToItsInterface)
{
    Scribo scribo;
    ProcessorInterface* const interface = &scribo;
    EXPECT_EQ(scribo.qt_metacast(nullptr), nullptr);
    EXPECT_EQ(scribo.qt_metacast("Scribo"), static_cast<void*>(&scribo));
    EXPECT_EQ(scribo.qt_metacast("ProcessorInterface"), static_cast<void*>(interface));
    EXPECT_EQ(scribo.qt_metacast("com.qrn.brightfield.processorinterface"), static_cast<void*>(interface));
    EXPECT_EQ(scribo.qt_metacast("QObject"), static_cast<void*>(static_cast<QObject*>(&scribo)));
    EXPECT_EQ(scribo.qt_metacast("Other"), nullptr);
    EXPECT_NE(static_cast<void*>(interface), static_cast<void*>(static_cast<QObject*>(&scribo)));
    EXPECT_EQ(scribo.metaObject()->methodCount(), QObject::staticMetaObject.methodCount());
    EXPECT_EQ(scribo.metaObject()->propertyCount(), QObject::staticMetaObject.propertyCount());
}

TEST_F(WithoutModel, AnswersIdleOperationsWithNothing)
{
    Scribo scribo;
    EXPECT_EQ(scribo.reserved11(), nullptr);
    EXPECT_EQ(scribo.reserved30(), nullptr);
    for (const QString& text : {scribo.reserved21(), scribo.reserved22(), scribo.reserved28(), scribo.reserved35()}) {
        EXPECT_TRUE(text.isEmpty());
    }
    for (bool flag :
        {scribo.reserved23(), scribo.reserved24(), scribo.reserved29(), scribo.reserved31(), scribo.reserved32()}) {
        EXPECT_FALSE(flag);
    }
    scribo.reserved14();
    scribo.reserved25();
    scribo.reserved26();
    scribo.reserved27();
    scribo.reserved33();
    scribo.reserved36();
}

TEST_F(WithoutModel, HandsOutItsOwnParameterList)
{
    Scribo scribo;
    EXPECT_EQ(scribo.params(), scribo.params());
    EXPECT_EQ(scribo.params()->size(), 13);
}

TEST_F(WithoutModel, SavesUnderOneKeyOnly)
{
    Scribo scribo;
    QJsonObject settings{{"other", 1}, {"paramsWrap", "old"}};
    scribo.saveParams(settings);
    EXPECT_EQ(settings.keys(), (QStringList{"other", "paramsWrap"}));
    EXPECT_EQ(settings["paramsWrap"].toArray().size(), 13);
}

TEST_F(WithoutModel, ListsTheModelsOnce)
{
    work.addModelFile("ocr_a_p1_1_v1.dat");
    Scribo early;
    work.addModelFile("ocr_a_p1_1_v2.dat");
    Scribo late;
    auto items
        = [](Scribo& scribo) { return *dynamic_cast<ComboBoxParam_ByValue*>(scribo.params()->at(1))->itemTexts; };
    EXPECT_EQ(items(early), (QStringList{"ocr_a_p1_1_v1.dat"}));
    EXPECT_EQ(items(late), (QStringList{"ocr_a_p1_1_v2.dat", "ocr_a_p1_1_v1.dat"}));
}

TEST_F(WithoutModel, SaysWhichModelIsSelected)
{
    work.addModelFile("ocr_x_p1_1_v1.dat");
    const auto processor = makeInstance("ocr_x_p1_1_v1.dat");
    QString text;
    EXPECT_TRUE(processor->reloadModel(text));
    EXPECT_EQ(text, "round-reload:ocr_x_p1_1_v1.dat");
    Scribo empty;
    EXPECT_TRUE(empty.reloadModel(text));
    EXPECT_EQ(text, "round-reload:");
}

TEST_F(WithoutModel, ChangesNothingWithoutItsKey)
{
    Scribo scribo;
    setValue(scribo, 10, "A1");
    scribo.loadParams({{"other", QJsonArray{}}});
    scribo.loadParams({});
    QJsonObject settings;
    scribo.saveParams(settings);
    EXPECT_EQ(settings["paramsWrap"].toArray().at(9)["values"], "A1");
}

TEST_F(WithoutModel, LoadsNoModelWithoutItsKey)
{
    work.addModelFile("ocr_damaged_p1_1_v1.trt", "engine");
    const auto instance = makeInstance();
    instance->params()->at(1)->readJson({{"selectedText", "ocr_damaged_p1_1_v1.trt"}});
    instance->loadParams({});
    instance->process(&tool, 0);
    EXPECT_EQ(textOf(*instance, 0), "模型文件加载出错") << "nothing says why, as nothing was tried";
}

TEST_F(WithoutModel, CopiesItsSettingsOnRequest)
{
    Scribo source;
    setValue(source, 10, "A1");
    setValue(source, 4, QJsonArray{true, true});
    QJsonObject saved;
    source.saveParams(saved);

    const std::unique_ptr<ProcessorInterface> copy(source.clone(&tool, true));
    QJsonObject copied;
    copy->saveParams(copied);
    EXPECT_EQ(copied, saved);

    const std::unique_ptr<ProcessorInterface> plain(source.clone(&tool, false));
    QJsonObject defaults;
    QJsonObject fresh;
    plain->saveParams(defaults);
    Scribo().saveParams(fresh);
    EXPECT_EQ(defaults, fresh);
}

TEST_F(WithoutModel, IsOkBeforeAnyItem)
{
    Scribo scribo;
    EXPECT_TRUE(scribo.isResultOk(-1));
    EXPECT_FALSE(scribo.isResultOk(-2));
    EXPECT_FALSE(scribo.isResultOk(0));
    EXPECT_FALSE(scribo.isResultOk(INT_MAX));
    EXPECT_FALSE(scribo.isResultOk(INT_MIN));
}

TEST_F(WithoutModel, SaysThatNoModelWasLoaded)
{
    const auto processor = makeInstance();
    processor->process(&tool, 0);
    EXPECT_FALSE(processor->isResultOk(0));
    EXPECT_FALSE(processor->isResultOk(-1));
    EXPECT_FALSE(processor->isResultOk(1));
    const QVariantMap record = processor->resultRecord(0);
    EXPECT_EQ(record["defect_types"].toList(), (QVariantList{"模型文件加载出错"}));
    EXPECT_EQ(record["defect_scores"].toList(), (QVariantList{-1.0}));
    EXPECT_EQ(record["defect_rects"].toList(), (QVariantList{QRect(10, 20, 100, 30)}));
    EXPECT_EQ(record["charCount"], -1);
    EXPECT_EQ(record["resString"], "");
}

TEST_F(WithoutModel, SaysWhyItsModelWasNotLoaded)
{
    work.addModelFile("ocr_x_p1_1_v1.onnx");
    work.addModelFile(
        "ocr_x_p1_1.json", R"({"classes":[{"name":"a"}],"model_infer_info":{"input_dims":{"width":320,"height":32}}})");
    const auto processor = makeInstance("ocr_x_p1_1_v1.onnx");
    processor->process(&tool, 0);
    EXPECT_FALSE(processor->isResultOk(0));
    EXPECT_EQ(textOf(*processor, 0), "Unsupported engine type: onnxUnsupported engine type: onnx\n");
}

TEST_F(WithoutModel, KeepsItsModelWhenAnUnknownOneIsChosen)
{
    work.addModelFile("ocr_x_p1_1_v1.onnx");
    const auto processor = makeInstance("ocr_x_p1_1_v1.onnx");
    processor->process(&tool, 0);
    const QString before = textOf(*processor, 0);
    EXPECT_FALSE(before.isEmpty());
    choose(*processor, "ocr_unknown_p1_1_v1.trt");
    processor->process(&tool, 0);
    EXPECT_EQ(textOf(*processor, 0), before);
}

TEST_F(WithoutModel, DoesNotRecordAnItemWithoutRegions)
{
    const auto processor = makeInstance();
    tool.taughtRegions.clear();
    processor->process(&tool, 0);
    EXPECT_FALSE(processor->isResultOk(0));
    EXPECT_TRUE(processor->isResultOk(-1));
    QVariantMap expected = processor->resultTemplate();
    expected["charCount"] = -1;
    EXPECT_EQ(processor->resultRecord(0), expected);
    tool.taughtRegions = {QRectF(0, 0, 10, 10)};
    processor->process(&tool, 1);
    EXPECT_FALSE(processor->isResultOk(0)) << "item 1 is the first that was recorded";
    EXPECT_FALSE(processor->isResultOk(1));
    EXPECT_EQ(processor->resultRecord(1)["defect_types"].toList().size(), 1);
}

TEST_F(WithoutModel, DoesNotRecordAnItemWhenTheModelIsDisabled)
{
    const auto processor = makeInstance();
    setValue(*processor, 3, QJsonArray{false, true});
    setValue(*processor, 4, QJsonArray{false, true});
    processor->process(&tool, 0);
    EXPECT_FALSE(processor->isResultOk(0));
    EXPECT_TRUE(processor->isResultOk(-1));
}

TEST_F(WithoutModel, PassesEverythingWhenDisabledWithOkSaving)
{
    const auto processor = makeInstance();
    setValue(*processor, 3, QJsonArray{false, true});
    setValue(*processor, 4, QJsonArray{true, false});
    processor->process(&tool, 0);
    EXPECT_TRUE(processor->isResultOk(0));
    EXPECT_TRUE(processor->resultRecord(0)["defect_types"].toList().isEmpty());
    EXPECT_EQ(processor->resultRecord(0)["charCount"], -1);
}

TEST_F(WithoutModel, ReadsOnWhenNoEnableChoiceIsSet)
{
    // Broken settings must not switch the inspection off.
    const auto processor = makeInstance();
    for (const QJsonArray& choice : {QJsonArray{false, false}, QJsonArray{true, true}}) {
        setValue(*processor, 3, choice);
        processor->process(&tool, 0);
        EXPECT_FALSE(processor->isResultOk(0));
        EXPECT_EQ(textOf(*processor, 0), "模型文件加载出错");
    }
}

TEST_F(WithoutModel, SetsABitForEachGoodItem)
{
    Scribo root;
    const std::unique_ptr<ProcessorInterface> instance(root.clone(&tool, false));
    auto& scribo = *dynamic_cast<Scribo*>(instance.get());
    setValue(scribo, 3, QJsonArray{false, true});
    setValue(scribo, 4, QJsonArray{true, false});
    for (int index : {0, 3, 31, 32, 40, -1, INT_MIN, INT_MAX}) {
        scribo.process(&tool, index);
    }
    EXPECT_EQ(scribo.okMask(), 0x80000009U);
    for (int position = 0; position < 8; ++position) {
        EXPECT_TRUE(scribo.isResultOk(position)) << position;
    }
    EXPECT_FALSE(scribo.isResultOk(8));

    setValue(scribo, 3, QJsonArray{true, false});
    scribo.process(&tool, 5);
    EXPECT_EQ(scribo.okMask(), 0x80000009U) << "an NG item sets none";
    EXPECT_FALSE(scribo.isResultOk(8));
    EXPECT_FALSE(scribo.isResultOk(-1));

    scribo.process(&tool, 0);
    EXPECT_EQ(scribo.okMask(), 0U) << "index 0 starts a new cycle";
    EXPECT_FALSE(scribo.isResultOk(1));
    EXPECT_TRUE(scribo.resultRecord(3)["defect_types"].toList().isEmpty());
    EXPECT_TRUE(scribo.modelEntries().isEmpty()) << "no model took part";
}

TEST_F(WithoutModel, AddsALineForEachRegionThatItCannotRead)
{
    const auto processor = makeInstance();
    tool.taughtRegions = {QRectF(0, 0, 20, 20), QRectF(0, 0, 0.5, 20), QRectF(50.5, 10, 30, 20)};
    processor->process(&tool, 0);
    const QVariantMap record = processor->resultRecord(0);
    EXPECT_EQ(record["defect_rects"].toList(), (QVariantList{QRect(0, 0, 20, 20), QRect(50, 10, 30, 20)}));
}

TEST_F(WithoutModel, TurnsAnOpenCvExceptionIntoAMessageLine)
{
    // The host announces a larger picture than it hands over.
    const auto processor = makeInstance();
    ScriptedTool liar;
    liar.picture = cv::Mat(10, 10, CV_8UC1, cv::Scalar(0));
    liar.taughtRegions = {QRectF(0, 0, 100, 30), QRectF(0, 0, 5, 5)};
    processor->process(&liar, 0);
    EXPECT_FALSE(processor->isResultOk(0));
    EXPECT_EQ(textOf(*processor, 0, 0), "模型文件加载出错");
    EXPECT_EQ(textOf(*processor, 0, 1), "模型文件加载出错");
}

TEST_F(WithoutModel, AsksForThePoseOfTheUpstreamTool)
{
    const auto processor = makeInstance();
    processor->process(&tool, 0);
    EXPECT_EQ(tool.askedPoseOf, "注射器分割");
}

TEST_F(WithoutModel, TakesTheSizeFromThePictureWithoutAHostTool)
{
    Scribo root;
    tool.taughtRegions = {QRectF(150, 0, 100, 30)};
    root.process(&tool, 0);
    EXPECT_EQ(root.resultRecord(0)["defect_rects"].toList(), (QVariantList{QRect(150, 0, 50, 30)}));
    QImage canvas(10, 10, QImage::Format_RGB32);
    QPainter painter(&canvas);
    root.drawResult(&painter, 0);
    EXPECT_EQ(painter.font().pointSize(), 10);
}

TEST_F(WithoutModel, SurvivesMissingTools)
{
    Scribo root;
    const std::unique_ptr<ProcessorInterface> orphan(root.clone(nullptr, true));
    orphan->process(nullptr, 0);
    EXPECT_FALSE(orphan->isResultOk(0));
    orphan->archivePictures(nullptr);
    orphan->drawResult(nullptr, 0);
    orphan->process(&tool, 0);
    EXPECT_FALSE(orphan->isResultOk(0));
}

TEST_F(WithoutModel, SetsTheOverlayFontForAnyItem)
{
    tool.picture = cv::Mat(1000, 100, CV_8UC1, cv::Scalar(0));
    const auto processor = makeInstance();
    QImage canvas(10, 10, QImage::Format_RGB32);
    QPainter painter(&canvas);
    processor->drawResult(&painter, 77);
    EXPECT_EQ(painter.font().pointSize(), 20);
    EXPECT_EQ(painter.font().weight(), 8);
    EXPECT_EQ(painter.brush().style(), Qt::NoBrush);
}

TEST_F(WithoutModel, ShowsTheSaveLocation)
{
    Scribo scribo;
    scribo.archivePictures(nullptr);
    const auto text = [&scribo] {
        QJsonObject settings;
        scribo.saveParams(settings);
        return settings["paramsWrap"].toArray().at(6)["values"].toString();
    };
    EXPECT_EQ(text(), scribo.findRemovableMounts().isEmpty() ? "系统盘" : scribo.findRemovableMounts().first());
}

TEST_F(WithoutModel, TakesScoreLimitsFromTheHost)
{
    // What becomes of them is the detector's; here: that no value a host may set does harm.
    Scribo scribo;
    const QVariantMap limit{{"name", "a"}, {"flag", true}, {"values", QVariantList{0.25, 1, 2, 3}}};
    for (const QVariant& value :
        {QVariant(QVariantList{limit, limit}), QVariant(QVariantList{QVariantMap()}), QVariant(5), QVariant("x"),
            QVariant(QVariantList{QVariantMap{{"values", QVariantList{1, 2, 3, 4, 5, 6}}}}), QVariant()}) {
        scribo.setProperty("scoreLimits", value);
        scribo.archivePictures(&tool);
    }
}
