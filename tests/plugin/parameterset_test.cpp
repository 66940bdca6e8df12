#include "parameterset.h"

#include "paramwrap.h"

#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

// clang-format off
const QString classifiedSaving = QString::fromUtf8(
    u8"/// 2. 分类存图 ./AISavePic/tavoro_p1_1_C1_T1/Ng/毛发/ROI1_20211112_094323_3421.bmp   \r"
    u8"///                 |           |           |   |       文件格式：区域-年月日-时分秒-毫秒序号.bmp    /0表示无框使用原图  \r"
    u8"///                 |           |           |   ng分类：根据config设置 \r"
    u8"///                 |           |           分类类别：OK/NG  \r"
    u8"///                 父文件夹     模型文件夹：模型标识-相机标识-工具标识   \r");
const QString saveLimit = QString::fromUtf8(
    u8"/// 3. 存图到达指定数目后不再存图，需清理目标文件夹。挂载移动硬盘时，不受数目限制。由存图开关控制 \r");
const QString modelNaming = QString::fromUtf8(
    u8"/// 4. 模型及配置文件命名规则：tavoro_p1_1_tfr_s1.pb    tavoro_p1_1_class.txt \r"
    u8"///                        客户简单-工程序号-模型序号-模型类别（tfc:分类,tfr:目标）-模型版本.pb \r");
// clang-format on

class Parameters : public testing::Test
{
protected:
    template <class T>
    T& parameter(int number)
    {
        return *dynamic_cast<T*>(set.list()->at(number - 1));
    }

    PluginSettings settings;
    ParameterSet set{settings};
};

} // namespace

TEST_F(Parameters, StandInTheirPersistedOrder)
{
    struct Expected
    {
        const char* kind;
        QString name;
        QString tip;
        quint32 category;
    };
    const QString comparison = QStringLiteral("选择字符串比较模式");
    const Expected expected[] = {
        {"SeparateParam", "choose model", "", 0},
        {"ComboBoxParam_ByValue", "model", "choose model, unique", 1},
        {"RadioBoxParam", "enable model", "enable model", 1},
        {"CheckBoxParam", "select the content of the saved picture", "you can choose the settings for saving pictures",
            1},
        {"LimitLineEditParam", "OK save picture", saveLimit, 3},
        {"LimitLineEditParam", "NG save picture", saveLimit, 3},
        {"LineEditParam", "path to save pictures",
            "set to 1.1 to indicate that such detection of the model is not used", 2},
        {"SeparateParam", comparison, "", 0},
        {"RadioBoxParam", comparison, comparison, 1},
        {"LineEditParam", "基准字符", "匹配的基准字符串，识别结果与基准字符完全一致才为OK，否则NG", 3},
        {"SeparateParam", "识别结果", "", 0},
        {"LineEditParam", "识别字符", "识别到的字符串", 2},
        {"LimitLineEditParam", "字符个数", "识别到的字符个数", 3},
    };
    ASSERT_EQ(set.list()->size(), 13);
    for (int i = 0; i < 13; ++i) {
        ParamWrap& parameter = *set.list()->at(i);
        EXPECT_EQ(parameter.typeName(), expected[i].kind) << i;
        EXPECT_EQ(parameter.name, expected[i].name) << i;
        EXPECT_EQ(parameter.tip, expected[i].tip) << i;
        EXPECT_EQ(parameter.category, expected[i].category) << i;
        EXPECT_TRUE(parameter.hostFlag) << i;
        EXPECT_TRUE(parameter.isRunningShow) << i;
        EXPECT_FALSE(parameter.auxFlag) << i;
    }
}

TEST_F(Parameters, TellTheChoicesInWords)
{
    auto& enable = parameter<RadioBoxParam>(3);
    ASSERT_EQ(enable.count, 2);
    EXPECT_EQ(enable.names[0], "enable model");
    EXPECT_EQ(enable.names[1], "disabled model");
    EXPECT_EQ(enable.tips[0], "enable model:\r" + modelNaming);
    EXPECT_EQ(enable.tips[1],
        "disabled model:\rif the model is not enabled, the operation of saving pictures will not be carried out, and "
        "the "
        "output result is OK");

    auto& saving = parameter<CheckBoxParam>(4);
    ASSERT_EQ(saving.count, 2);
    EXPECT_EQ(saving.names[0], "save OK picture");
    EXPECT_EQ(saving.names[1], "save NG picture");
    EXPECT_EQ(saving.tips[0], "save OK picture\r" + classifiedSaving);
    EXPECT_EQ(saving.tips[1], "save NG picture\r" + classifiedSaving);

    auto& comparison = parameter<RadioBoxParam>(9);
    ASSERT_EQ(comparison.count, 3);
    EXPECT_EQ(comparison.names[0], "不启用");
    EXPECT_EQ(comparison.names[1], "固定字符");
    EXPECT_EQ(comparison.names[2], "自动更新");
    EXPECT_EQ(comparison.tips[0], "不启用字符串比较");
    EXPECT_EQ(comparison.tips[1], "启用固定字符比较");
    EXPECT_EQ(comparison.tips[2], "启用软件自动更新字符串比较");
}

TEST_F(Parameters, PointAtTheSettings)
{
    auto& model = parameter<ComboBoxParam_ByValue>(2);
    EXPECT_EQ(model.selectedText, &settings.selectedModel);
    EXPECT_EQ(model.itemValues, &settings.modelFiles);
    EXPECT_EQ(model.itemTexts, &settings.modelFileTexts);
    EXPECT_EQ(parameter<RadioBoxParam>(3).values, settings.modelEnable);
    EXPECT_EQ(parameter<CheckBoxParam>(4).values, settings.saveSwitch);

    auto& okCap = parameter<LimitLineEditParam>(5);
    EXPECT_EQ(okCap.value, &settings.okSavedCount);
    EXPECT_EQ(okCap.lowThresh, &settings.okSaveLow);
    EXPECT_EQ(okCap.highThresh, &settings.okSaveLimit);
    auto& ngCap = parameter<LimitLineEditParam>(6);
    EXPECT_EQ(ngCap.value, &settings.ngSavedCount);
    EXPECT_EQ(ngCap.lowThresh, &settings.ngSaveLow);
    EXPECT_EQ(ngCap.highThresh, &settings.ngSaveLimit);
    for (int number : {5, 6, 7}) {
        auto& field = parameter<LineEditParam>(number);
        EXPECT_EQ(*field.rangeMin, 0);
        EXPECT_EQ(*field.rangeMax, 9999);
        EXPECT_EQ(*field.rangeStep, 1);
    }
    EXPECT_EQ(parameter<LineEditParam>(7).value, &settings.savePathText);
    EXPECT_EQ(parameter<RadioBoxParam>(9).values, settings.compareMode);
    for (int number : {10, 12}) {
        EXPECT_EQ(parameter<LineEditParam>(number).rangeMin, nullptr);
    }
    EXPECT_EQ(parameter<LineEditParam>(10).value, &settings.referenceText);
    EXPECT_EQ(parameter<LineEditParam>(12).value, &settings.recognisedText);
    auto& count = parameter<LimitLineEditParam>(13);
    EXPECT_EQ(count.value, &settings.charCount);
    EXPECT_EQ(count.lowThresh, &settings.charCountLow);
    EXPECT_EQ(count.highThresh, &settings.charCountHigh);
    EXPECT_EQ(*count.rangeMin, 0);
    EXPECT_EQ(*count.rangeMax, 99999);
    EXPECT_EQ(*count.rangeStep, 1);
}

TEST_F(Parameters, WriteTheirDefaults)
{
    const QJsonArray written = set.toJson();
    const QJsonObject cap{{"isRunningShow", true}, {"values", 0}, {"lowThresh", 0}, {"highThresh", 1000}};
    const QJsonObject heading{{"isRunningShow", true}};
    ASSERT_EQ(written.size(), 13);
    EXPECT_EQ(written[0], heading);
    EXPECT_EQ(written[1], (QJsonObject{{"isRunningShow", true}, {"selectedText", ""}}));
    EXPECT_EQ(written[2]["values"], (QJsonArray{true, false}));
    EXPECT_EQ(written[3]["values"], (QJsonArray{false, false}));
    EXPECT_EQ(written[4], cap);
    EXPECT_EQ(written[5], cap);
    EXPECT_EQ(written[6]["values"], "the picture will be saved to the system disk");
    EXPECT_EQ(written[7], heading);
    EXPECT_EQ(written[8]["values"], (QJsonArray{true, false, false}));
    EXPECT_EQ(written[9]["values"], "");
    EXPECT_EQ(written[10], heading);
    EXPECT_EQ(written[11]["values"], "");
    EXPECT_EQ(
        written[12], (QJsonObject{{"isRunningShow", true}, {"values", 0}, {"lowThresh", 0}, {"highThresh", 99999}}));
}

TEST_F(Parameters, AreRestoredByPosition)
{
    settings.referenceText = "A1";
    settings.compareMode[1] = true;
    settings.okSaveLimit = 7;
    const QJsonArray written = set.toJson();
    PluginSettings restored;
    ParameterSet other(restored);
    other.fromJson(written);
    EXPECT_EQ(other.toJson(), written);
    EXPECT_EQ(restored.referenceText, "A1");
    EXPECT_EQ(restored.okSaveLimit, 7);
}

TEST_F(Parameters, KeepTheirValuesWhereTheArrayHasNone)
{
    settings.referenceText = "A1";
    settings.selectedModel = "m";
    const QJsonArray before = set.toJson();
    set.fromJson({});
    EXPECT_EQ(set.toJson(), before);
    set.fromJson({1, "x", QJsonValue::Null, true});
    EXPECT_EQ(set.toJson(), before);
    set.fromJson({QJsonObject(), QJsonObject{{"selectedText", 3}}});
    EXPECT_EQ(settings.selectedModel, "m");

    QJsonArray longer = before;
    longer.append(QJsonObject{{"values", 1}});
    set.fromJson(longer);
    EXPECT_EQ(set.toJson(), before);
}
