#include "settings.h"

#include "parameterkind.h"
#include "parameters.h"
#include "resulttext.h"

#include <QJsonArray>

#include <algorithm>

namespace scribo::host {

namespace {

const QString paramsKey = QStringLiteral("paramsWrap");

bool areSwitches(const QJsonArray& values)
{
    return std::all_of(values.begin(), values.end(), [](const QJsonValue& value) { return value.isBool(); });
}

/// How many of the first `count` are on.
int chosenOf(const QJsonArray& values, int count)
{
    int chosen = 0;
    for (int i = 0; i < count; ++i) {
        chosen += values.at(i).toBool() ? 1 : 0;
    }
    return chosen;
}

QString switchesDemand(ParamWrap& parameter, const QJsonValue& value, int count)
{
    const QJsonArray values = value.toArray();
    if (!value.isArray() || !areSwitches(values)) {
        return QStringLiteral("a list of true and false");
    }
    const bool hasOne = !isKind(parameter, "RadioBoxParam") || chosenOf(values, count) == 1;
    return hasOne ? QString() : QStringLiteral("a list with one true");
}

/// What kind of value is needed where the parameter itself writes `own`; empty when `value` is of that kind. A value of
/// another kind would be read as false, 0 or an empty text, and less would be judged than the settings say.
QString demand(ParamWrap& parameter, const QJsonValue& value, const QJsonValue& own)
{
    const bool hasType = value.type() == own.type();
    switch (own.type()) {
    case QJsonValue::Bool:
        return hasType ? QString() : QStringLiteral("true or false");
    case QJsonValue::String:
        return hasType ? QString() : QStringLiteral("a text");
    case QJsonValue::Double:
        // Only for whole numbers that an int can hold are the two the same.
        if (isWhole(parameter)) {
            return value.toInt(-1) == value.toDouble() ? QString() : QStringLiteral("a whole number");
        }
        return hasType ? QString() : QStringLiteral("a number");
    case QJsonValue::Array:
        return switchesDemand(parameter, value, own.toArray().size());
    default:
        return {}; // a key for another reader
    }
}

QString mistakeIn(const QJsonObject& entry, ParamWrap& parameter, const QJsonObject& own)
{
    for (auto value = entry.begin(); value != entry.end(); ++value) {
        const QString expected = demand(parameter, value.value(), own[value.key()]);
        if (!expected.isEmpty()) {
            return QStringLiteral("\"%1\" must be %2").arg(value.key(), expected);
        }
    }
    return {};
}

QString mistakeIn(const QJsonObject& settings, ProcessorInterface& processor)
{
    const QList<ParamWrap*>& parameters = *processor.params();
    if (!settings[paramsKey].isArray()) {
        return QStringLiteral("not a settings file: the array \"paramsWrap\" is missing");
    }
    const QJsonArray values = settings[paramsKey].toArray();
    if (values.size() > parameters.size()) {
        return QStringLiteral("settings of %1 parameters, but the processor has %2")
            .arg(values.size())
            .arg(parameters.size());
    }
    for (int i = 0; i < values.size(); ++i) {
        if (!values[i].isObject()) {
            return QStringLiteral("\"paramsWrap\": parameter %1 is not an object").arg(i + 1);
        }
        const QString mistake = mistakeIn(values[i].toObject(), *parameters[i], parameterState(processor, i + 1));
        if (!mistake.isEmpty()) {
            return QStringLiteral("\"paramsWrap\": parameter %1: ").arg(i + 1) + mistake;
        }
    }
    return {};
}

} // namespace

Result<void> applySettings(const QJsonObject& settings, ProcessorInterface& processor)
{
    const QString mistake = mistakeIn(settings, processor);
    if (!mistake.isEmpty()) {
        return failure(mistake);
    }
    const QJsonArray values = settings[paramsKey].toArray();
    for (int i = 0; i < values.size(); ++i) {
        processor.params()->at(i)->readJson(values[i].toObject());
    }
    return {};
}

QJsonObject currentSettings(ProcessorInterface& processor)
{
    QJsonObject settings;
    processor.saveParams(settings);
    return settings;
}

void activateSettings(ProcessorInterface& processor)
{
    processor.loadParams(currentSettings(processor));
}

} // namespace scribo::host
