#include "regionlist.h"

#include "resulttext.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

namespace scribo::host {

namespace {

const QString rectKey = QStringLiteral("rect");
const QString referenceKey = QStringLiteral("reference");
const QString countKey = QStringLiteral("count");

Result<QRectF> readRect(const QJsonValue& value)
{
    const QJsonArray array = value.toArray();
    const bool areNumbers
        = std::all_of(array.begin(), array.end(), [](const QJsonValue& element) { return element.isDouble(); });
    if (array.size() != 4 || !areNumbers) {
        return failure("a region is four numbers [x, y, width, height]");
    }
    const auto rect = makeRect({array[0].toDouble(), array[1].toDouble(), array[2].toDouble(), array[3].toDouble()});
    if (!rect) {
        return failure("width and height must be at least 1");
    }
    return *rect;
}

Result<CountRange> readCount(const QJsonValue& value)
{
    const QJsonArray array = value.toArray();
    const bool areNumbers = array.size() == 2 && array[0].isDouble() && array[1].isDouble();
    if (!areNumbers || !isCountRange(array[0].toDouble(), array[1].toDouble())) {
        return failure(QStringLiteral("\"count\" must be [min, max], whole numbers from 0 to %1").arg(largestCount));
    }
    return CountRange{array[0].toInt(), array[1].toInt()};
}

Result<TaughtRegion> readObject(const QJsonObject& object)
{
    const QStringList keys = object.keys();
    for (const QString& key : keys) {
        if (key != rectKey && key != referenceKey && key != countKey) {
            return failure(
                QStringLiteral("unknown key \"%1\": a region has \"rect\", \"reference\" and \"count\"").arg(key));
        }
    }
    TaughtRegion region;
    if (object.contains(referenceKey)) {
        if (!object[referenceKey].isString()) {
            return failure("\"reference\" must be a text");
        }
        region.reference = object[referenceKey].toString();
    }
    if (object.contains(countKey)) {
        const auto count = readCount(object[countKey]);
        if (!count) {
            return tl::unexpected(count.error());
        }
        region.count = *count;
    }
    return readRect(object[rectKey]).map([&](const QRectF& rect) {
        region.rect = rect;
        return region;
    });
}

Result<TaughtRegion> readRegion(const QJsonValue& value)
{
    if (value.isObject()) {
        return readObject(value.toObject());
    }
    return readRect(value).map([](const QRectF& rect) { return TaughtRegion{rect, {}, {}}; });
}

} // namespace

Result<QList<TaughtRegion>> readRegionList(const QJsonValue& value)
{
    const QJsonArray array = value.toArray();
    if (array.isEmpty()) {
        return failure("a list of regions is expected");
    }
    QList<TaughtRegion> regions;
    for (int i = 0; i < array.size(); ++i) {
        const auto region = readRegion(array[i]);
        if (!region) {
            return failure(QStringLiteral("region %1: %2").arg(i + 1).arg(textOf(region.error())));
        }
        regions.append(*region);
    }
    return regions;
}

} // namespace scribo::host
