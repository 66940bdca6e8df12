#include "parameterset.h"

#include "paramwrap.h"

#include <QCoreApplication>
#include <QJsonObject>

#include <algorithm>

namespace {

// Tool-tips as the host's users know them; "\r" is the host's line break.
// clang-format off

// How pictures are filed: an example path and what each level of it means.
constexpr char classifiedSavingTip[] =
    u8"/// 2. 分类存图 ./AISavePic/tavoro_p1_1_C1_T1/Ng/毛发/ROI1_20211112_094323_3421.bmp   \r"
    u8"///                 |           |           |   |       文件格式：区域-年月日-时分秒-毫秒序号.bmp    /0表示无框使用原图  \r"
    u8"///                 |           |           |   ng分类：根据config设置 \r"
    u8"///                 |           |           分类类别：OK/NG  \r"
    u8"///                 父文件夹     模型文件夹：模型标识-相机标识-工具标识   \r";

// Saving stops at the set number, until the folder is cleared; a removable disk has no limit.
constexpr char saveLimitTip[] =
    u8"/// 3. 存图到达指定数目后不再存图，需清理目标文件夹。挂载移动硬盘时，不受数目限制。由存图开关控制 \r";

// How model and configuration files are named.
constexpr char modelNamingTip[] =
    u8"/// 4. 模型及配置文件命名规则：tavoro_p1_1_tfr_s1.pb    tavoro_p1_1_class.txt \r"
    u8"///                        客户简单-工程序号-模型序号-模型类别（tfc:分类,tfr:目标）-模型版本.pb \r";

// clang-format on

/// A text in the translation context of the plug-in class.
QString translated(const char* text)
{
    return QCoreApplication::translate("Scribo", text);
}

} // namespace

ParameterSet::ParameterSet(PluginSettings& settings)
    : settings(settings)
    , modelLabel(translated("model"))
    , modelTip(translated("choose model, unique"))
    , modelEnableNames{translated("enable model"), translated("disabled model")}
    , modelEnableTips{translated("enable model") + ":\r" + QString::fromUtf8(modelNamingTip),
          translated("disabled model") + ":\r"
              + translated("if the model is not enabled, the operation of saving pictures will not be carried out, "
                           "and the output result is OK")}
    , saveSwitchNames{translated("save OK picture"), translated("save NG picture")}
    , saveSwitchTips{translated("save OK picture") + "\r" + QString::fromUtf8(classifiedSavingTip),
          translated("save NG picture") + "\r" + QString::fromUtf8(classifiedSavingTip)}
    , compareModeNames{QStringLiteral("不启用"), QStringLiteral("固定字符"), QStringLiteral("自动更新")}
    , compareModeTips{QStringLiteral("不启用字符串比较"), QStringLiteral("启用固定字符比较"),
          QStringLiteral("启用软件自动更新字符串比较")}
{
    settings.savePathText = translated("the picture will be saved to the system disk");
    addModelParameters();
    addArchiveParameters();
    addJudgementParameters();
}

ParameterSet::~ParameterSet()
{
    qDeleteAll(parameters);
}

void ParameterSet::addModelParameters()
{
    parameters << new SeparateParam(translated("choose model"), {}, true, true)
               << new ComboBoxParam_ByValue(modelLabel, modelTip, true, true, 1, &settings.modelFileTexts,
                      &settings.modelFiles, &settings.selectedModel)
               << new RadioBoxParam(translated("enable model"), translated("enable model"), true, true, 1,
                      settings.modelEnable, 2, modelEnableNames, modelEnableTips);
}

void ParameterSet::addArchiveParameters()
{
    const QString limitTip = QString::fromUtf8(saveLimitTip);
    int* const minimum = &settings.saveRangeMin;
    int* const maximum = &settings.saveRangeMax;
    int* const step = &settings.saveRangeStep;
    parameters << new CheckBoxParam(translated("select the content of the saved picture"),
        translated("you can choose the settings for saving pictures"), true, true, 1, settings.saveSwitch, 2,
        saveSwitchNames, saveSwitchTips)
               << new LimitLineEditParam(translated("OK save picture"), limitTip, true, true, &settings.okSavedCount,
                      &settings.okSaveLow, &settings.okSaveLimit, LineEditParam::IntValue, minimum, maximum, step)
               << new LimitLineEditParam(translated("NG save picture"), limitTip, true, true, &settings.ngSavedCount,
                      &settings.ngSaveLow, &settings.ngSaveLimit, LineEditParam::IntValue, minimum, maximum, step)
               << new LineEditParam(translated("path to save pictures"),
                      translated("set to 1.1 to indicate that such detection of the model is not used"), true, true, 2,
                      &settings.savePathText, LineEditParam::StringValue, minimum, maximum, step);
}

void ParameterSet::addJudgementParameters()
{
    const QString comparison = QStringLiteral("选择字符串比较模式");
    parameters << new SeparateParam(comparison, {}, true, true)
               << new RadioBoxParam(
                      comparison, comparison, true, true, 1, settings.compareMode, 3, compareModeNames, compareModeTips)
               << new LineEditParam(QStringLiteral("基准字符"),
                      QStringLiteral("匹配的基准字符串，识别结果与基准字符完全一致才为OK，否则NG"), true, true, 3,
                      &settings.referenceText, LineEditParam::StringValue, nullptr, nullptr, nullptr)
               << new SeparateParam(QStringLiteral("识别结果"), {}, true, true)
               << new LineEditParam(QStringLiteral("识别字符"), QStringLiteral("识别到的字符串"), true, true, 2,
                      &settings.recognisedText, LineEditParam::StringValue, nullptr, nullptr, nullptr)
               << new LimitLineEditParam(QStringLiteral("字符个数"), QStringLiteral("识别到的字符个数"), true, true,
                      &settings.charCount, &settings.charCountLow, &settings.charCountHigh, LineEditParam::IntValue,
                      &settings.charRangeMin, &settings.charRangeMax, &settings.charRangeStep);
}

QJsonArray ParameterSet::toJson() const
{
    QJsonArray array;
    for (ParamWrap* parameter : parameters) {
        QJsonObject object;
        parameter->writeJson(object);
        array.append(object);
    }
    return array;
}

void ParameterSet::fromJson(const QJsonArray& array)
{
    const int count = std::min(parameters.size(), array.size());
    for (int i = 0; i < count; ++i) {
        parameters[i]->readJson(array.at(i).toObject());
    }
}
