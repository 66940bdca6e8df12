#include "regioncutter.h"

#include <algorithm>
#include <cmath>

namespace {

/// One direction of a region.
struct Span
{
    double start;
    double length;
};

std::optional<cv::Range> pixels(Span span, int extent)
{
    if (!std::isfinite(span.start) || !std::isfinite(span.length) || span.length < 1.0)
        return {};
    span.start = std::max(span.start, 0.0);
    if (span.start >= extent)
        return {};
    if (span.start + span.length > extent)
        span.length = extent - span.start;

    // nearbyint: halves to even. Start and length are rounded on their own, so that the end can come
    // to lie a pixel outside.
    const int start = static_cast<int>(std::nearbyint(span.start));
    const int end = std::min(start + static_cast<int>(std::nearbyint(span.length)), extent);
    if (end <= start)
        return {};
    return cv::Range(start, end);
}

} // namespace

std::optional<cv::Rect> regionPixels(const QRectF& region, const cv::Size& picture)
{
    const auto columns = pixels({region.x(), region.width()}, picture.width);
    const auto rows = pixels({region.y(), region.height()}, picture.height);
    if (!columns || !rows)
        return {};
    return cv::Rect(columns->start, rows->start, columns->size(), rows->size());
}
