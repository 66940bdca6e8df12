#pragma once

#include <QList>
#include <QMap>
#include <QRectF>
#include <QSize>
#include <QString>

#include <optional>

/// How many characters a reading may have, both ends included.
struct CountRange
{
    int low = 0;
    int high = 0;
};

/// A region that was taught for one line of text.
struct TaughtRegion
{
    QRectF rect; ///< pixels of the picture
    std::optional<QString> reference; ///< what fixed comparison expects here, instead of the settings' reference
    std::optional<CountRange> count; ///< how long the text may be here, instead of the settings' range
};

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
/// A region is a list [x, y, width, height] or an object with "rect" and, where a text of its own is expected
/// there, "reference" (a text) and "count" ([min, max]).
class RegionPlan
{
public:
    /// Each picture is one region.
    RegionPlan() = default;
    /// These regions in every picture.
    explicit RegionPlan(const QList<TaughtRegion>& regions);

    /// Reads the plan from a file. Returns false with the file and the place of the mistake in `error`, and
    /// leaves the plan as it was.
    bool readFile(const QString& path, QString* error);

    /// The regions of a picture of `size`. Returns false with the reason in `error` when the plan has none for
    /// it, or one that has no pixel of it.
    bool regionsFor(const QString& picture, const QSize& size, QList<TaughtRegion>* regions, QString* error) const;

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

/// Reads "MIN:MAX", two whole numbers from 0 of which the second is not below the first.
bool parseCount(const QString& text, CountRange* range);

/// Reads "X,Y,WIDTH,HEIGHT", four finite numbers of which the last two are at least 1.
bool parseRegion(const QString& text, QRectF* rect);
