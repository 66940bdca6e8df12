#pragma once

#include <QDateTime>
#include <QList>
#include <QRect>
#include <QRectF>
#include <QString>

namespace scribo::host {

/// A text line that was judged NG, as the processor's result record gives it.
struct NgLine
{
    QRect box; ///< pixels of the picture
    double score = 0; ///< below 0: the region could not be read, and `text` says why
    QString text;
};

/// What became of an item's picture in the archive, as far as the processor shows it.
enum class Archiving {
    off, ///< not wanted
    queued, ///< handed to the writers
    capped, ///< the folder already held as many pictures as the settings allow
};

/// How a reading was compared with a reference.
enum class Comparison {
    off,
    fixed,
    automatic,
};

/// The outcome of one region of a picture, which is one item of the processor.
struct RegionResult
{
    int index = 0; ///< the item's index: 0 for the first region
    QRectF rect; ///< pixels of the picture
    QDateTime time; ///< when the inspection of the region ended
    bool isOk = false;
    QString text;
    int count = -1; ///< characters that were judged; -1: none were read
    double milliseconds = 0; ///< that the processor took
    Comparison comparison = Comparison::off;
    QString reference; ///< after the inspection; automatic comparison rewrites it while it learns
    QList<NgLine> ngLines;
    Archiving archiving = Archiving::off;
};

/// The outcome of one picture, which is one cycle of the processor.
struct InspectionResult
{
    bool isOk = false; ///< all regions were OK
    double milliseconds = 0; ///< the regions' together
    QList<RegionResult> regions;
};

/// Why the region could not be read; empty: it was.
inline QString unreadMessage(const RegionResult& region)
{
    for (const NgLine& line : region.ngLines) {
        if (line.score < 0) {
            return line.text;
        }
    }
    return {};
}

inline QString verdictText(bool isOk)
{
    return isOk ? QStringLiteral("OK") : QStringLiteral("NG");
}

} // namespace scribo::host
