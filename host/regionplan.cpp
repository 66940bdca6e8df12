#include "regionplan.h"

#include "jsonfile.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

const QString rectKey = QStringLiteral("rect");
const QString referenceKey = QStringLiteral("reference");
const QString countKey = QStringLiteral("count");

/// Where in the file a mistake is, and what it is.
struct Reader
{
    QString file;
    QString place;
    QString* error;

    bool fail(const QString& reason) const
    {
        *error = file + QStringLiteral(": ") + place + reason;
        return false;
    }

    bool readList(const QJsonValue& value, QList<TaughtRegion>* regions) const;
    bool readRegion(const QJsonValue& value, TaughtRegion* region) const;
    bool readObject(const QJsonObject& object, TaughtRegion* region) const;
    bool readCount(const QJsonValue& value, TaughtRegion* region) const;
    bool readRect(const QJsonValue& value, QRectF* rect) const;
};

/// Above this a count means "no upper limit"; it is the processor's own largest.
constexpr int largestCount = 99999;

bool isCountRange(double low, double high)
{
    return std::floor(low) == low && std::floor(high) == high && 0 <= low && low <= high && high <= largestCount;
}

/// Below one pixel a region is not inspected, and a region that is not inspected is never NG.
bool isInspected(const QRectF& rect)
{
    return rect.width() >= 1.0 && rect.height() >= 1.0;
}

bool makeRect(const std::array<double, 4>& numbers, QRectF* rect)
{
    *rect = QRectF(numbers[0], numbers[1], numbers[2], numbers[3]);
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); })
        && isInspected(*rect);
}

bool Reader::readRect(const QJsonValue& value, QRectF* rect) const
{
    const QJsonArray array = value.toArray();
    const bool areNumbers
        = std::all_of(array.begin(), array.end(), [](const QJsonValue& element) { return element.isDouble(); });
    if (array.size() != 4 || !areNumbers) {
        return fail(QStringLiteral("a region is four numbers [x, y, width, height]"));
    }
    if (!makeRect({array[0].toDouble(), array[1].toDouble(), array[2].toDouble(), array[3].toDouble()}, rect)) {
        return fail(QStringLiteral("width and height must be at least 1"));
    }
    return true;
}

bool Reader::readObject(const QJsonObject& object, TaughtRegion* region) const
{
    const QStringList keys = object.keys();
    for (const QString& key : keys) {
        if (key != rectKey && key != referenceKey && key != countKey) {
            return fail(
                QStringLiteral("unknown key \"%1\": a region has \"rect\", \"reference\" and \"count\"").arg(key));
        }
    }
    if (object.contains(referenceKey)) {
        if (!object[referenceKey].isString()) {
            return fail(QStringLiteral("\"reference\" must be a text"));
        }
        region->reference = object[referenceKey].toString();
    }
    if (object.contains(countKey) && !readCount(object[countKey], region)) {
        return false;
    }
    return readRect(object[rectKey], &region->rect);
}

bool Reader::readCount(const QJsonValue& value, TaughtRegion* region) const
{
    const QJsonArray array = value.toArray();
    const bool areNumbers = array.size() == 2 && array[0].isDouble() && array[1].isDouble();
    if (!areNumbers || !isCountRange(array[0].toDouble(), array[1].toDouble())) {
        return fail(QStringLiteral("\"count\" must be [min, max], whole numbers from 0 to %1").arg(largestCount));
    }
    region->count = CountRange{array[0].toInt(), array[1].toInt()};
    return true;
}

bool Reader::readRegion(const QJsonValue& value, TaughtRegion* region) const
{
    return value.isObject() ? readObject(value.toObject(), region) : readRect(value, &region->rect);
}

bool Reader::readList(const QJsonValue& value, QList<TaughtRegion>* regions) const
{
    const QJsonArray array = value.toArray();
    if (array.isEmpty()) {
        return fail(QStringLiteral("a list of regions is expected"));
    }
    for (int i = 0; i < array.size(); ++i) {
        TaughtRegion region;
        const Reader inner{file, place + QStringLiteral("region %1: ").arg(i + 1), error};
        if (!inner.readRegion(array[i], &region)) {
            return false;
        }
        regions->append(region);
    }
    return true;
}

bool hasReference(const TaughtRegion& region)
{
    return region.reference.has_value();
}

bool hasCount(const TaughtRegion& region)
{
    return region.count.has_value();
}

QString describe(const QRectF& rect)
{
    return QStringLiteral("%1,%2,%3,%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

} // namespace

RegionPlan::RegionPlan(const QList<TaughtRegion>& regions)
    : common(regions)
{
}

bool RegionPlan::readFile(const QString& path, QString* error)
{
    QJsonDocument document;
    if (!readJsonFile(path, &document, error)) {
        return false;
    }

    RegionPlan plan;
    if (document.isArray()) {
        if (!Reader{path, {}, error}.readList(document.array(), &plan.common)) {
            return false;
        }
    } else {
        plan.file = path;
        const QJsonObject pictures = document.object();
        for (auto picture = pictures.begin(); picture != pictures.end(); ++picture) {
            const Reader reader{path, QStringLiteral("\"%1\": ").arg(picture.key()), error};
            if (!reader.readList(picture.value(), &plan.byPicture[picture.key()])) {
                return false;
            }
        }
    }
    *this = plan;
    return true;
}

bool RegionPlan::regionsFor(
    const QString& picture, const QSize& size, QList<TaughtRegion>* regions, QString* error) const
{
    const QRectF whole(QPointF(0, 0), size);
    *regions = common;
    if (!file.isEmpty()) {
        *regions = byPicture.value(picture, byPicture.value(QFileInfo(picture).fileName()));
        if (regions->isEmpty()) {
            *error = QStringLiteral("has no regions in ") + file;
            return false;
        }
    }
    if (regions->isEmpty()) {
        regions->append({whole, {}, {}});
    }
    for (int i = 0; i < regions->size(); ++i) {
        if (!isInspected((*regions)[i].rect.intersected(whole))) {
            *error = QStringLiteral("region %1 (%2) lies outside the picture, which is %3 x %4")
                         .arg(i + 1)
                         .arg(describe((*regions)[i].rect))
                         .arg(size.width())
                         .arg(size.height());
            return false;
        }
    }
    return true;
}

bool RegionPlan::hasSeveral() const
{
    return common.size() > 1 || std::any_of(byPicture.begin(), byPicture.end(), [](const QList<TaughtRegion>& regions) {
        return regions.size() > 1;
    });
}

bool RegionPlan::allHaveReferences() const
{
    if (file.isEmpty()) {
        return !common.isEmpty() && std::all_of(common.begin(), common.end(), hasReference);
    }
    return std::all_of(byPicture.begin(), byPicture.end(),
        [](const QList<TaughtRegion>& regions) { return std::all_of(regions.begin(), regions.end(), hasReference); });
}

bool RegionPlan::hasReferences() const
{
    return anyRegion(hasReference);
}

bool RegionPlan::hasCounts() const
{
    return anyRegion(hasCount);
}

bool RegionPlan::anyRegion(bool (*has)(const TaughtRegion&)) const
{
    const auto isAnyOf
        = [has](const QList<TaughtRegion>& regions) { return std::any_of(regions.begin(), regions.end(), has); };
    return isAnyOf(common) || std::any_of(byPicture.begin(), byPicture.end(), isAnyOf);
}

bool parseCount(const QString& text, CountRange* range)
{
    const QStringList pieces = text.split(QLatin1Char(':'));
    if (pieces.size() != 2) {
        return false;
    }
    bool lowIsNumber = false;
    bool highIsNumber = false;
    *range = {pieces[0].trimmed().toInt(&lowIsNumber), pieces[1].trimmed().toInt(&highIsNumber)};
    return lowIsNumber && highIsNumber && isCountRange(range->low, range->high);
}

bool parseRegion(const QString& text, QRectF* rect)
{
    const QStringList pieces = text.split(QLatin1Char(','));
    if (pieces.size() != 4) {
        return false;
    }
    std::array<double, 4> numbers{};
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        numbers[i] = pieces[i].trimmed().toDouble(&isNumber);
        if (!isNumber) {
            return false;
        }
    }
    return makeRect(numbers, rect);
}
