#include "files/regionplan.h"

#include "files/jsonfile.h"
#include "regionlist.h"
#include "resulttext.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace scribo::host {

namespace {

bool hasReference(const TaughtRegion& region)
{
    return region.reference.has_value();
}

bool hasCount(const TaughtRegion& region)
{
    return region.count.has_value();
}

} // namespace

RegionPlan::RegionPlan(const QList<TaughtRegion>& common)
    : common(common)
{
}

Result<RegionPlan> RegionPlan::fromFile(const QString& path)
{
    const auto document = readJsonFile(path);
    if (!document) {
        return tl::unexpected(document.error());
    }
    if (document->isArray()) {
        const auto regions = readRegionList(document->array());
        if (!regions) {
            return failure(path + QStringLiteral(": ") + textOf(regions.error()));
        }
        return RegionPlan(*regions);
    }
    RegionPlan plan;
    plan.file = path;
    const QJsonObject pictures = document->object();
    for (auto picture = pictures.begin(); picture != pictures.end(); ++picture) {
        const auto regions = readRegionList(picture.value());
        if (!regions) {
            return failure(QStringLiteral("%1: \"%2\": %3").arg(path, picture.key(), textOf(regions.error())));
        }
        plan.byPicture[picture.key()] = *regions;
    }
    return plan;
}

Result<QList<TaughtRegion>> RegionPlan::regionsFor(const QString& picture, const QSize& size) const
{
    QList<TaughtRegion> regions = common;
    if (!file.isEmpty()) {
        regions = byPicture.value(picture, byPicture.value(QFileInfo(picture).fileName()));
        if (regions.isEmpty()) {
            return failure(QStringLiteral("has no regions in ") + file);
        }
    }
    if (regions.isEmpty()) {
        regions.append({QRectF(QPointF(0, 0), size), {}, {}});
    }
    const auto inside = checkInside(regions, size);
    if (!inside) {
        return tl::unexpected(inside.error());
    }
    return regions;
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

} // namespace scribo::host
