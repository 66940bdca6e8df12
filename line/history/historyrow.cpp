#include "history/historyrow.h"

namespace scribo::line {

HistoryRow historyRow(const QString& station, const Verdict& verdict, const QString& picture)
{
    HistoryRow row;
    row.station = station;
    row.sequence = static_cast<qint64>(verdict.sequence);
    row.takenAt = verdict.takenAt.toUTC();
    row.job = verdict.job;
    row.jobHash = verdict.jobHash;
    row.modelHash = verdict.modelHash;
    row.isOk = verdict.isOk;
    row.reasonCode = static_cast<int>(verdict.reason);
    row.reason = verdict.reasonText;
    row.milliseconds = verdict.milliseconds;
    row.picture = picture;
    for (const RegionReading& reading : verdict.readings) {
        row.readings.append(
            {reading.region, reading.name, reading.text, reading.expected, reading.isOk, reading.reasonText});
    }
    return row;
}

} // namespace scribo::line
