#include "inspector.h"

#include "parameternumbers.h"
#include "parameters.h"
#include "pictureimage.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QPainter>

namespace scribo::host {

namespace {

const QString valuesKey = QStringLiteral("values");
const QString lowKey = QStringLiteral("lowThresh");
const QString highKey = QStringLiteral("highThresh");

bool isChosen(const QJsonObject& choices, int index)
{
    return choices[valuesKey].toArray().at(index).toBool();
}

QList<NgLine> ngLinesOf(const QVariantMap& record)
{
    const QVariantList boxes = record[QStringLiteral("defect_rects")].toList();
    const QVariantList scores = record[QStringLiteral("defect_scores")].toList();
    const QVariantList types = record[QStringLiteral("defect_types")].toList();
    QList<NgLine> lines;
    for (int i = 0; i < boxes.size(); ++i) {
        lines.append({boxes[i].toRect(), scores.value(i).toDouble(), types.value(i).toString()});
    }
    return lines;
}

/// Keeps a parameter as it is now, and puts it back at the end.
class KeptParameter
{
public:
    KeptParameter(ProcessorInterface& processor, int number)
        : parameter(processor.params()->value(number - 1, nullptr))
        , state(parameterState(processor, number))
    {
    }
    ~KeptParameter()
    {
        if (parameter != nullptr) {
            parameter->readJson(restored());
        }
    }
    KeptParameter(const KeptParameter&) = delete;
    KeptParameter& operator=(const KeptParameter&) = delete;

    void change(const QJsonObject& values)
    {
        if (parameter == nullptr) {
            return;
        }
        QJsonObject changed = state;
        for (auto value = values.begin(); value != values.end(); ++value) {
            changed[value.key()] = value.value();
        }
        keys = values.keys();
        parameter->readJson(changed);
    }

private:
    /// Only what was changed: the processor may have written the rest meanwhile.
    QJsonObject restored() const
    {
        QJsonObject now;
        parameter->writeJson(now);
        for (const QString& key : keys) {
            now[key] = state[key];
        }
        return now;
    }

    ParamWrap* parameter;
    QJsonObject state;
    QStringList keys;
};

} // namespace

Comparison comparisonOf(ProcessorInterface& processor)
{
    const QJsonObject mode = parameterState(processor, ParameterNumber::compare);
    if (isChosen(mode, 1)) {
        return Comparison::fixed;
    }
    return isChosen(mode, 2) ? Comparison::automatic : Comparison::off;
}

Result<std::unique_ptr<Inspector>> Inspector::make(const ProcessorPlugin& plugin)
{
    std::unique_ptr<Inspector> inspector(new Inspector);
    auto processor = plugin.makeInstance(&inspector->tool);
    if (!processor) {
        return tl::unexpected(processor.error());
    }
    inspector->instance = std::move(*processor);
    return inspector;
}

InspectionResult Inspector::inspect(
    const cv::Mat& picture, const QList<TaughtRegion>& regions, const std::optional<PosePair>& pose)
{
    QList<QRectF> rects;
    for (const TaughtRegion& region : regions) {
        rects.append(region.rect);
    }
    tool.setCycle(picture, rects, pose);
    itemCount = regions.size();

    InspectionResult result;
    for (int i = 0; i < regions.size(); ++i) {
        result.regions.append(inspectRegion(i, regions[i]));
        result.milliseconds += result.regions.last().milliseconds;
    }
    result.isOk = instance->isResultOk(-1);
    return result;
}

RegionResult Inspector::inspectRegion(int index, const TaughtRegion& region)
{
    RegionResult result;
    result.index = index;
    result.rect = region.rect;
    result.comparison = comparisonOf(*instance);
    KeptParameter reference(*instance, ParameterNumber::reference);
    KeptParameter count(*instance, ParameterNumber::count);
    if (region.reference && result.comparison == Comparison::fixed) {
        reference.change({{valuesKey, *region.reference}});
    }
    if (region.count) {
        count.change({{lowKey, region.count->low}, {highKey, region.count->high}});
    }
    inspectItem(index, &result);
    return result;
}

void Inspector::inspectItem(int index, RegionResult* result)
{
    QElapsedTimer timer;
    timer.start();
    instance->process(&tool, index);
    result->milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    result->time = QDateTime::currentDateTime();

    const QVariantMap record = instance->resultRecord(index);
    result->text = record[QStringLiteral("resString")].toString();
    result->count = record.value(QStringLiteral("charCount"), -1).toInt();
    result->ngLines = ngLinesOf(record);
    // While the model is switched off, nothing is read and the processor keeps no item. The cycle's verdict is then OK.
    const QJsonObject enable = parameterState(*instance, ParameterNumber::enable);
    const bool isDisabled = isChosen(enable, 1) && !isChosen(enable, 0);
    result->isOk = instance->isResultOk(isDisabled ? -1 : index);
    result->reference = parameterState(*instance, ParameterNumber::reference)[valuesKey].toString();
    result->archiving = archivingOf(result->isOk);
}

/// The processor leaves the number of files that it found in the folder, and saves while that is below the
/// limit; a removable disk has none.
Archiving Inspector::archivingOf(bool isOk)
{
    const QJsonObject save = parameterState(*instance, ParameterNumber::save);
    if (!tool.savingAllowed() || !isChosen(save, isOk ? 0 : 1)) {
        return Archiving::off;
    }
    const QJsonObject limit = parameterState(*instance, isOk ? ParameterNumber::okLimit : ParameterNumber::ngLimit);
    const bool isFull = limit[valuesKey].toInt() >= limit[highKey].toInt();
    return isFull && tool.removableDiskPath().isEmpty() ? Archiving::capped : Archiving::queued;
}

QImage Inspector::overlay()
{
    QImage image = pictureImage(tool.image(0));
    if (image.isNull()) {
        return image;
    }
    QPainter painter(&image);
    for (int i = 0; i < itemCount; ++i) {
        instance->drawResult(&painter, i);
    }
    return image;
}

} // namespace scribo::host
