#include "rules/localmoment.h"

#include <QDateTime>

#include <algorithm>

namespace scribo::line {

namespace {

constexpr qint64 dayMilliseconds = 24 * 60 * 60 * 1000;
constexpr qint64 firstJulianDay = 2440588; // 1970-01-01

/// Longer than any clock is set back.
constexpr qint64 settingBack = 3 * 60 * 60 * 1000;

qint64 offset(qint64 milliseconds, const QTimeZone& zone)
{
    return qint64{1000} * zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC));
}

qint64 daysIn(qint64 milliseconds)
{
    return milliseconds >= 0 ? milliseconds / dayMilliseconds
                             : -((dayMilliseconds - 1 - milliseconds) / dayMilliseconds);
}

QTime timeOfDay(qint64 milliseconds)
{
    return QTime::fromMSecsSinceStartOfDay(static_cast<int>(milliseconds - daysIn(milliseconds) * dayMilliseconds));
}

} // namespace

LocalMoment::LocalMoment(qint64 milliseconds, const QTimeZone& zone)
{
    const qint64 offsetNow = offset(milliseconds, zone);
    shown = furthest = milliseconds + offsetNow;
    const qint64 offsetBefore = offset(milliseconds - settingBack, zone);
    if (offsetBefore <= offsetNow) {
        return;
    }
    // The last millisecond of the old offset, found by halving.
    qint64 before = milliseconds - settingBack;
    qint64 after = milliseconds;
    while (after - before > 1) {
        const qint64 middle = before + (after - before) / 2;
        (offset(middle, zone) == offsetBefore ? before : after) = middle;
    }
    furthest = std::max(shown, before + offsetBefore);
}

/// QDateTime can do this too, but errs by an hour round some changes of the clocks after 2037.
std::optional<qint64> LocalMoment::whenShown(const QDate& date, const QTime& time, const QTimeZone& zone)
{
    const qint64 shown = (date.toJulianDay() - firstJulianDay) * dayMilliseconds + time.msecsSinceStartOfDay();
    // A change is far from the next one, so that the offset is that of the day before or that of the day after.
    for (const qint64 guess : {offset(shown - dayMilliseconds, zone), offset(shown + dayMilliseconds, zone)}) {
        if (offset(shown - guess, zone) == guess) {
            return shown - guess;
        }
    }
    return {};
}

QTime LocalMoment::time() const
{
    return timeOfDay(shown);
}

QDate LocalMoment::day(const QTime& begin) const
{
    return QDate::fromJulianDay(firstJulianDay + daysIn(furthest - begin.msecsSinceStartOfDay()));
}

QTime LocalMoment::shiftTime() const
{
    return timeOfDay(furthest);
}

} // namespace scribo::line
