#include "parameters.h"

#include "parameterkind.h"
#include "parameternumbers.h"
#include "resulttext.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QtMath>

#include <optional>

namespace scribo::host {

namespace {

const QString valuesKey = QStringLiteral("values");

/// Category of values that the processor shows while it runs.
constexpr quint32 runTimeCategory = 2;

ParamWrap* findParameter(ProcessorInterface& processor, int number)
{
    const QList<ParamWrap*>* const parameters = processor.params();
    return parameters == nullptr ? nullptr : parameters->value(number - 1, nullptr);
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QJsonObject stateOf(ParamWrap& parameter)
{
    QJsonObject state;
    parameter.writeJson(state);
    return state;
}

void setState(ParamWrap& parameter, const QString& key, const QJsonValue& value)
{
    QJsonObject state = stateOf(parameter);
    state[key] = value;
    parameter.readJson(state);
}

// Drop-down lists

Result<void> setSelection(ComboBoxParam_ByValue& parameter, const QString& value)
{
    const QStringList& entries = *parameter.itemValues;
    QStringList matches = entries.filter(QRegularExpression(QLatin1Char('^') + QRegularExpression::escape(value)));
    if (entries.contains(value)) {
        matches = QStringList(value);
    }
    if (matches.size() == 1 && !value.isEmpty()) {
        setState(parameter, QStringLiteral("selectedText"), matches.first());
        return {};
    }
    const QString choices = entries.isEmpty() ? QStringLiteral("there are none") : entries.join(QStringLiteral(", "));
    return failure(matches.size() > 1 && !value.isEmpty()
            ? QStringLiteral("%1 %2 stands for several: %3").arg(parameter.name, quoted(value), matches.join(", "))
            : QStringLiteral("no such %1: %2 (%3)").arg(parameter.name, quoted(value), choices));
}

// Choices

std::optional<bool> parseSwitch(const QString& text)
{
    const QString word = text.trimmed().toLower();
    if (word == QLatin1String("on") || word == QLatin1String("true")) {
        return true;
    }
    if (word == QLatin1String("off") || word == QLatin1String("false")) {
        return false;
    }
    return std::nullopt;
}

Result<void> setSwitches(RadioBoxParam& parameter, const QString& value)
{
    const QStringList words = value.split(QLatin1Char(','));
    QJsonArray values;
    for (const QString& word : words) {
        if (const auto isOn = parseSwitch(word)) {
            values.append(*isOn);
        }
    }
    if (words.size() != parameter.count || values.size() != parameter.count) {
        return failure(QStringLiteral("%1 must be \"on\" or \"off\" for each of %2 choices, separated by commas")
                           .arg(quoted(value))
                           .arg(parameter.count));
    }
    setState(parameter, valuesKey, values);
    return {};
}

Result<void> setChoice(RadioBoxParam& parameter, const QString& value)
{
    bool isNumber = false;
    int chosen = value.toInt(&isNumber) - 1;
    for (int i = 0; i < parameter.count && !isNumber; ++i) {
        if (parameter.names[i] == value) {
            chosen = i;
            isNumber = true;
        }
    }
    if (!isNumber || chosen < 0 || chosen >= parameter.count) {
        return failure(
            QStringLiteral("%1 is none of the choices: %2").arg(quoted(value), describeParameter(parameter)));
    }
    QJsonArray values;
    for (int i = 0; i < parameter.count; ++i) {
        values.append(i == chosen);
    }
    setState(parameter, valuesKey, values);
    return {};
}

// Numbers and texts

/// The number as the parameter's type has it, within the parameter's range.
Result<QJsonValue> parseNumber(const LineEditParam& parameter, const QString& text)
{
    bool isNumber = false;
    QJsonValue value;
    if (parameter.valueType == LineEditParam::IntValue) {
        value = text.trimmed().toInt(&isNumber);
    } else {
        value = text.trimmed().toDouble(&isNumber);
    }
    if (!isNumber || !qIsFinite(value.toDouble())) {
        return failure(quoted(text) + QStringLiteral(" is not a number"));
    }
    const bool hasRange = parameter.rangeMin != nullptr && parameter.rangeMax != nullptr;
    if (hasRange && (value.toDouble() < *parameter.rangeMin || value.toDouble() > *parameter.rangeMax)) {
        return failure(QStringLiteral("%1 is not between %2 and %3")
                           .arg(text.trimmed())
                           .arg(*parameter.rangeMin)
                           .arg(*parameter.rangeMax));
    }
    return value;
}

Result<void> setLimits(LimitLineEditParam& parameter, const QStringList& limits)
{
    const auto low = parseNumber(parameter, limits[0]);
    const auto high = low ? parseNumber(parameter, limits[1]) : low;
    if (!high) {
        return tl::unexpected(high.error());
    }
    if (low->toDouble() > high->toDouble()) {
        return failure(QStringLiteral("the lower limit %1 is above the upper limit %2").arg(limits[0], limits[1]));
    }
    setState(parameter, QStringLiteral("lowThresh"), *low);
    setState(parameter, QStringLiteral("highThresh"), *high);
    return {};
}

Result<void> setLine(LineEditParam& parameter, const QString& value)
{
    if (parameter.valueType == LineEditParam::StringValue) {
        setState(parameter, valuesKey, value);
        return {};
    }
    if (parameter.valueType == LineEditParam::BoolValue) {
        const auto isOn = parseSwitch(value);
        if (!isOn) {
            return failure(quoted(value) + QStringLiteral(" must be \"on\" or \"off\""));
        }
        setState(parameter, valuesKey, *isOn);
        return {};
    }
    const QStringList limits = value.split(QLatin1Char(':'));
    if (limits.size() == 2 && isKind(parameter, "LimitLineEditParam")) {
        return setLimits(static_cast<LimitLineEditParam&>(parameter), limits);
    }
    const auto number = parseNumber(parameter, value);
    if (!number) {
        return tl::unexpected(number.error());
    }
    setState(parameter, valuesKey, *number);
    return {};
}

Result<void> setValue(ParamWrap& parameter, const QString& value)
{
    if (parameter.category == runTimeCategory) {
        return failure("is written by the processor itself");
    }
    if (isKind(parameter, "ComboBoxParam_ByValue")) {
        return setSelection(static_cast<ComboBoxParam_ByValue&>(parameter), value);
    }
    if (isKind(parameter, "CheckBoxParam")) {
        return setSwitches(static_cast<CheckBoxParam&>(parameter), value);
    }
    if (isKind(parameter, "RadioBoxParam")) {
        return setChoice(static_cast<RadioBoxParam&>(parameter), value);
    }
    if (isLine(parameter)) {
        return setLine(static_cast<LineEditParam&>(parameter), value);
    }
    return failure("is a heading, which has no value");
}

// Descriptions

QString describeChoices(const RadioBoxParam& parameter)
{
    QStringList choices;
    for (int i = 0; i < parameter.count; ++i) {
        const QString choice = QStringLiteral("%1 %2").arg(i + 1).arg(parameter.names[i]);
        choices.append(parameter.values[i] ? QLatin1Char('[') + choice + QLatin1Char(']') : choice);
    }
    return choices.join(QStringLiteral(" | "));
}

QString describeLine(LineEditParam& parameter)
{
    const QJsonObject state = stateOf(parameter);
    QString value = state[valuesKey].toVariant().toString();
    if (parameter.valueType == LineEditParam::StringValue) {
        return quoted(value);
    }
    if (!state.contains(QStringLiteral("lowThresh"))) {
        return value;
    }
    return QStringLiteral("%1 (limits %2:%3)")
        .arg(value, state[QStringLiteral("lowThresh")].toVariant().toString(),
            state[QStringLiteral("highThresh")].toVariant().toString());
}

} // namespace

QJsonObject parameterState(ProcessorInterface& processor, int number)
{
    ParamWrap* const parameter = findParameter(processor, number);
    return parameter == nullptr ? QJsonObject() : stateOf(*parameter);
}

QString describeParameter(ParamWrap& parameter)
{
    if (isKind(parameter, "ComboBoxParam_ByValue")) {
        return *static_cast<ComboBoxParam_ByValue&>(parameter).selectedText;
    }
    if (isChoice(parameter)) {
        return describeChoices(static_cast<RadioBoxParam&>(parameter));
    }
    if (isLine(parameter)) {
        return describeLine(static_cast<LineEditParam&>(parameter));
    }
    return {};
}

Result<void> setParameter(ProcessorInterface& processor, int number, const QString& value)
{
    ParamWrap* const parameter = findParameter(processor, number);
    const Result<void> result = parameter == nullptr
        ? failure("the processor has no such parameter (see --list-params)")
        : setValue(*parameter, value);
    if (!result) {
        return failure(QStringLiteral("parameter %1: %2").arg(number).arg(textOf(result.error())));
    }
    return {};
}

Result<void> setParameter(ProcessorInterface& processor, const QString& assignment)
{
    const int equals = assignment.indexOf(QLatin1Char('='));
    bool isNumber = false;
    const int number = assignment.left(equals).toInt(&isNumber);
    if (equals > 0 && isNumber) {
        return setParameter(processor, number, assignment.mid(equals + 1));
    }
    return failure(quoted(assignment) + QStringLiteral(" is not NUMBER=VALUE"));
}

QStringList modelNames(ProcessorInterface& processor)
{
    ParamWrap* const parameter = findParameter(processor, ParameterNumber::model);
    if (parameter == nullptr || !isKind(*parameter, "ComboBoxParam_ByValue")) {
        return {};
    }
    return *static_cast<ComboBoxParam_ByValue*>(parameter)->itemValues;
}

} // namespace scribo::host
