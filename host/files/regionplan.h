#pragma once

#include "result.h"
#include "taughtregion.h"

#include <QMap>

namespace scribo::host {

/// Which regions of which picture are inspected.
///
/// Comes from the command line or from a JSON file, which holds either one list of regions for every picture,
///
///     [[140, 60, 270, 52], {"rect": [140, 140, 270, 52], "reference": "LOT:A4827"}]
///
/// or an object of such lists, by the picture's name as it was given or without its folder:
///
///     {"01_carton.png": [[141, 201, 331, 58]], "02_can.png": [[161, 182, 298, 59]]}
///
/// regionlist.h says what a list looks like.
class RegionPlan
{
public:
    /// Each picture is one region.
    RegionPlan() = default;
    /// These regions in every picture.
    explicit RegionPlan(const QList<TaughtRegion>& common);

    /// Reads a plan. The error starts with the file and the place of the mistake.
    static Result<RegionPlan> fromFile(const QString& path);

    /// The regions of a picture of `size`. Fails when the plan has none for it, or one that has no pixel of it.
    Result<QList<TaughtRegion>> regionsFor(const QString& picture, const QSize& size) const;

    /// Whether some picture has more than one region.
    bool hasSeveral() const;
    /// Whether every region says itself which text is expected.
    bool allHaveReferences() const;
    /// Whether some region says which text is expected.
    bool hasReferences() const;
    /// Whether some region says how long the text may be.
    bool hasCounts() const;

private:
    bool anyRegion(bool (*has)(const TaughtRegion&)) const;

    QList<TaughtRegion> common; ///< for every picture; empty: the whole picture
    QMap<QString, QList<TaughtRegion>> byPicture;
    QString file; ///< where byPicture comes from; empty: `common` counts
};

} // namespace scribo::host
