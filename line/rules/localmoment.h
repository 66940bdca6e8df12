#pragma once

#include <QDate>
#include <QTime>
#include <QTimeZone>

#include <optional>

namespace scribo::line {

/// A moment as the line's own clock shows it.
///
/// Days and shifts begin once. Where the clock is set back (the end of daylight saving time), the time that it had
/// reached already still counts: a day that begins at 02:30 does not end again when 02:59 is followed by 02:00. Where
/// the clock is set forward over the time at which a day or shift begins, it begins at that moment.
class LocalMoment
{
public:
    /// `milliseconds`: since 1970-01-01 00:00 UTC.
    LocalMoment(qint64 milliseconds, const QTimeZone& zone);

    /// The milliseconds since 1970-01-01 00:00 UTC at which the clock shows a date and time; where it does so twice,
    /// the first ones. None: it never does.
    static std::optional<qint64> whenShown(const QDate& date, const QTime& time, const QTimeZone& zone);

    /// What the clock shows.
    QTime time() const;

    /// The day that goes on, when each day begins at `begin`.
    QDate day(const QTime& begin) const;

    /// The time of day that decides which shift goes on.
    QTime shiftTime() const;

private:
    // Milliseconds since 1970-01-01 00:00 on this clock.
    qint64 shown = 0;
    qint64 furthest = 0; ///< the latest that it has shown so far
};

} // namespace scribo::line
