#include "paramwrap.h"

#include <QJsonArray>

#include <cstring>
#include <utility>

namespace {

const QString runningShowKey = QStringLiteral("isRunningShow");
const QString valuesKey = QStringLiteral("values");
const QString lowKey = QStringLiteral("lowThresh");
const QString highKey = QStringLiteral("highThresh");
const QString compensateKey = QStringLiteral("compensate");
const QString selectedKey = QStringLiteral("selectedText");

bool isNumber(quint32 valueType)
{
    return valueType == LineEditParam::IntValue || valueType == LineEditParam::FloatValue
        || valueType == LineEditParam::DoubleValue;
}

void readNumber(const QJsonValue& json, quint32 valueType, void* target)
{
    switch (valueType) {
    case LineEditParam::IntValue:
        *static_cast<qint32*>(target) = json.toInt();
        break;
    case LineEditParam::FloatValue:
        *static_cast<float*>(target) = static_cast<float>(json.toDouble());
        break;
    case LineEditParam::DoubleValue:
        *static_cast<double*>(target) = json.toDouble();
        break;
    default:
        break;
    }
}

QJsonValue writeNumber(quint32 valueType, const void* source)
{
    switch (valueType) {
    case LineEditParam::IntValue:
        return *static_cast<const qint32*>(source);
    case LineEditParam::FloatValue:
        return static_cast<double>(*static_cast<const float*>(source));
    case LineEditParam::DoubleValue:
        return *static_cast<const double*>(source);
    default:
        return QJsonValue::Undefined;
    }
}

/// Bit for bit, so that no number changes on the way.
void copyNumber(quint32 valueType, const void* source, void* target)
{
    static_assert(sizeof(qint32) == sizeof(float));
    std::memcpy(target, source, valueType == LineEditParam::DoubleValue ? sizeof(double) : sizeof(float));
}

} // namespace

ParamWrap::ParamWrap(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category)
    : name(std::move(name))
    , tip(std::move(tip))
    , hostFlag(hostFlag)
    , category(category)
    , isRunningShow(isRunningShow)
{
}

ParamWrap::~ParamWrap() = default;

QString ParamWrap::typeName()
{
    return {};
}

bool ParamWrap::isSpecial()
{
    return false;
}

void ParamWrap::readJson(const QJsonObject& object)
{
    if (object.contains(runningShowKey)) {
        isRunningShow = object[runningShowKey].toBool();
    }
}

void ParamWrap::writeJson(QJsonObject& object)
{
    object[runningShowKey] = isRunningShow;
}

SeparateParam::SeparateParam(QString name, QString tip, bool hostFlag, bool isRunningShow)
    : ParamWrap(std::move(name), std::move(tip), hostFlag, isRunningShow, 0)
{
}

QString SeparateParam::typeName()
{
    return QStringLiteral("SeparateParam");
}

LineEditParam::LineEditParam(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category,
    void* value, quint32 valueType, int* rangeMin, int* rangeMax, int* rangeStep)
    : ParamWrap(std::move(name), std::move(tip), hostFlag, isRunningShow, category)
    , valueType(valueType)
    , rangeMin(rangeMin)
    , rangeMax(rangeMax)
    , rangeStep(rangeStep)
    , value(value)
{
}

QString LineEditParam::typeName()
{
    return QStringLiteral("LineEditParam");
}

void LineEditParam::readJson(const QJsonObject& object)
{
    ParamWrap::readJson(object);
    if (!object.contains(valuesKey)) {
        return;
    }
    const QJsonValue json = object[valuesKey];
    if (valueType == BoolValue) {
        *static_cast<bool*>(value) = json.toBool();
    } else if (valueType == StringValue) {
        *static_cast<QString*>(value) = json.toString();
    } else {
        readNumber(json, valueType, value);
    }
}

void LineEditParam::writeJson(QJsonObject& object)
{
    ParamWrap::writeJson(object);
    if (valueType == BoolValue) {
        object[valuesKey] = *static_cast<bool*>(value);
    } else if (valueType == StringValue) {
        object[valuesKey] = *static_cast<QString*>(value);
    } else if (isNumber(valueType)) {
        object[valuesKey] = writeNumber(valueType, value);
    }
}

LimitLineEditParam::LimitLineEditParam(QString name, QString tip, bool hostFlag, bool isRunningShow, void* value,
    void* lowThresh, void* highThresh, quint32 valueType, int* rangeMin, int* rangeMax, int* rangeStep)
    : LineEditParam(
        std::move(name), std::move(tip), hostFlag, isRunningShow, 3, value, valueType, rangeMin, rangeMax, rangeStep)
    , lowThresh(lowThresh)
    , highThresh(highThresh)
{
}

QString LimitLineEditParam::typeName()
{
    return QStringLiteral("LimitLineEditParam");
}

void LimitLineEditParam::readJson(const QJsonObject& object)
{
    LineEditParam::readJson(object);
    if (!isNumber(valueType)) {
        return;
    }
    if (object.contains(lowKey) && object.contains(highKey)) {
        readNumber(object[lowKey], valueType, lowThresh);
        readNumber(object[highKey], valueType, highThresh);
        if (compensate != nullptr) {
            readNumber(object[compensateKey], valueType, compensate);
        }
    } else if (name == QStringLiteral("匹配分数")) {
        copyNumber(valueType, value, lowThresh);
    }
}

void LimitLineEditParam::writeJson(QJsonObject& object)
{
    LineEditParam::writeJson(object);
    if (!isNumber(valueType)) {
        return;
    }
    object[lowKey] = writeNumber(valueType, lowThresh);
    object[highKey] = writeNumber(valueType, highThresh);
    if (compensate != nullptr) {
        object[compensateKey] = writeNumber(valueType, compensate);
    }
}

RadioBoxParam::RadioBoxParam(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category,
    bool* values, int count, QString* names, QString* tips)
    : ParamWrap(std::move(name), std::move(tip), hostFlag, isRunningShow, category)
    , count(count)
    , names(names)
    , tips(tips)
    , values(values)
{
}

QString RadioBoxParam::typeName()
{
    return QStringLiteral("RadioBoxParam");
}

void RadioBoxParam::readJson(const QJsonObject& object)
{
    ParamWrap::readJson(object);
    if (!object.contains(valuesKey)) {
        return;
    }
    const QJsonArray array = object[valuesKey].toArray();
    for (int i = 0; i < count; ++i) {
        values[i] = array.at(i).toBool();
    }
}

void RadioBoxParam::writeJson(QJsonObject& object)
{
    ParamWrap::writeJson(object);
    QJsonArray array;
    for (int i = 0; i < count; ++i) {
        array.append(values[i]);
    }
    object[valuesKey] = array;
}

QString CheckBoxParam::typeName()
{
    return QStringLiteral("CheckBoxParam");
}

ComboBoxParam_ByValue::ComboBoxParam_ByValue(QString name, QString tip, bool hostFlag, bool isRunningShow,
    quint32 category, QStringList* itemTexts, QStringList* itemValues, QString* selectedText)
    : ParamWrap(std::move(name), std::move(tip), hostFlag, isRunningShow, category)
    , itemTexts(itemTexts)
    , itemValues(itemValues)
    , selectedText(selectedText)
{
}

QString ComboBoxParam_ByValue::typeName()
{
    return QStringLiteral("ComboBoxParam_ByValue");
}

void ComboBoxParam_ByValue::readJson(const QJsonObject& object)
{
    ParamWrap::readJson(object);
    const QJsonValue json = object[selectedKey];
    if (json.isString()) {
        *selectedText = json.toString();
    }
}

void ComboBoxParam_ByValue::writeJson(QJsonObject& object)
{
    ParamWrap::writeJson(object);
    object[selectedKey] = *selectedText;
}
