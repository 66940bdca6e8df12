#include "taughtregion.h"

#include "resulttext.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace scribo::host {

namespace {

QString describe(const QRectF& rect)
{
    return QStringLiteral("%1,%2,%3,%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

} // namespace

bool isCountRange(double low, double high)
{
    return std::floor(low) == low && std::floor(high) == high && 0 <= low && low <= high && high <= largestCount;
}

bool isInspected(const QRectF& rect)
{
    return rect.width() >= 1.0 && rect.height() >= 1.0;
}

std::optional<QRectF> makeRect(const std::array<double, 4>& numbers)
{
    const QRectF rect(numbers[0], numbers[1], numbers[2], numbers[3]);
    const bool areFinite
        = std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
    return areFinite && isInspected(rect) ? std::optional(rect) : std::nullopt;
}

std::optional<CountRange> parseCount(const QString& text)
{
    const QStringList pieces = text.split(QLatin1Char(':'));
    if (pieces.size() != 2) {
        return std::nullopt;
    }
    bool lowIsNumber = false;
    bool highIsNumber = false;
    const CountRange range = {pieces[0].trimmed().toInt(&lowIsNumber), pieces[1].trimmed().toInt(&highIsNumber)};
    if (!lowIsNumber || !highIsNumber || !isCountRange(range.low, range.high)) {
        return std::nullopt;
    }
    return range;
}

std::optional<QRectF> parseRegion(const QString& text)
{
    const QStringList pieces = text.split(QLatin1Char(','));
    if (pieces.size() != 4) {
        return std::nullopt;
    }
    std::array<double, 4> numbers{};
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        numbers[i] = pieces[i].trimmed().toDouble(&isNumber);
        if (!isNumber) {
            return std::nullopt;
        }
    }
    return makeRect(numbers);
}

Result<void> checkInside(const QList<TaughtRegion>& regions, const QSize& size)
{
    const QRectF whole(QPointF(0, 0), size);
    for (int i = 0; i < regions.size(); ++i) {
        if (!isInspected(regions[i].rect.intersected(whole))) {
            return failure(QStringLiteral("region %1 (%2) lies outside the picture, which is %3 x %4")
                               .arg(i + 1)
                               .arg(describe(regions[i].rect))
                               .arg(size.width())
                               .arg(size.height()));
        }
    }
    return {};
}

} // namespace scribo::host
