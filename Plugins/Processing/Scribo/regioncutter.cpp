#include "regioncutter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// One direction of a region.
struct Span
{
    double start;
    double length;
    cv::Range pixels;
};

std::optional<Span> clipped(double regionStart, double regionLength, int extent)
{
    Span span{regionStart, regionLength, {}};
    if (std::isnan(span.start) || std::isnan(span.length)) {
        return {};
    }
    span.start = std::max(span.start, 0.0);
    if (span.start >= extent) {
        return {};
    }
    if (span.start + span.length > extent) {
        span.length = extent - span.start;
    }

    // nearbyint rounds halves to even. Start and length are rounded separately, so the end may lie one pixel outside.
    const int start = static_cast<int>(std::nearbyint(span.start));
    const int end = std::min(start + static_cast<int>(std::nearbyint(span.length)), extent);
    if (end <= start) {
        return {};
    }
    span.pixels = cv::Range(start, end);
    return span;
}

/// The nearest integer, halves to even.
int rounded(double value)
{
    using Limits = std::numeric_limits<int>;
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<int>(std::nearbyint(std::clamp<double>(value, Limits::min(), Limits::max())));
}

/// `length`, or what is left of it where `start` is so far out that the end would be no integer.
int roundedLength(double length, int start)
{
    return std::min(rounded(length), std::numeric_limits<int>::max() - std::max(start, 0));
}

} // namespace

bool isInspected(const QRectF& region)
{
    return !(region.width() < 1.0 || region.height() < 1.0);
}

std::optional<RegionCut> cutRegion(const QRectF& region, const cv::Size& picture)
{
    if (!isInspected(region)) {
        return {};
    }
    const auto columns = clipped(region.x(), region.width(), picture.width);
    const auto rows = clipped(region.y(), region.height(), picture.height);
    if (!columns || !rows) {
        return {};
    }
    return RegionCut{QRectF(columns->start, rows->start, columns->length, rows->length),
        cv::Rect(columns->pixels.start, rows->pixels.start, columns->pixels.size(), rows->pixels.size())};
}

cv::Rect wholePixels(const QRectF& region)
{
    const int x = rounded(region.x());
    const int y = rounded(region.y());
    return {x, y, roundedLength(region.width(), x), roundedLength(region.height(), y)};
}
