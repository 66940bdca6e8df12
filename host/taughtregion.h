#pragma once

#include "result.h"

#include <QList>
#include <QRectF>
#include <QSize>
#include <QString>

#include <array>
#include <optional>

namespace scribo::host {

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

/// Above this a count means "no upper limit"; it is the processor's own largest.
constexpr int largestCount = 99999;

/// Whether both are whole numbers from 0 to `largestCount`, and the first is not above the second.
bool isCountRange(double low, double high);

/// Whether the processor inspects a region of this size. Below one pixel it does not, and a region that is not
/// inspected is never NG.
bool isInspected(const QRectF& rect);

/// The rectangle of [x, y, width, height]; nothing when a number is not finite or the processor would not inspect it.
std::optional<QRectF> makeRect(const std::array<double, 4>& numbers);

/// Reads "MIN:MAX", two whole numbers from 0 of which the second is not below the first.
std::optional<CountRange> parseCount(const QString& text);

/// Reads "X,Y,WIDTH,HEIGHT", four finite numbers of which the last two are at least 1.
std::optional<QRectF> parseRegion(const QString& text);

/// Fails, and names the first such region, when one has less than a pixel of a picture of `size`.
Result<void> checkInside(const QList<TaughtRegion>& regions, const QSize& size);

} // namespace scribo::host
