#pragma once

#include "history/historytables.h"

namespace scribo::test {

/// An item of its own look for each number.
inline line::HistoryRow row(qint64 sequence, bool isOk = true, const QString& station = QStringLiteral("S1"))
{
    line::HistoryRow row;
    row.station = station;
    row.sequence = sequence;
    row.takenAt = QDateTime(QDate(2026, 11, 21), QTime(6, 0, 0, 7), Qt::UTC).addSecs(sequence);
    row.job = QStringLiteral("carton");
    row.jobHash = QStringLiteral("ab");
    row.modelHash = QStringLiteral("cd");
    row.isOk = isOk;
    row.reasonCode = isOk ? 0 : 1;
    row.reason = isOk ? QString() : QStringLiteral("month is 10, expected 11");
    row.milliseconds = 12.5;
    row.readings = {{0, QStringLiteral("date"), QStringLiteral("LOT:A%1").arg(sequence), QStringLiteral("LOT:A1"), isOk,
                        row.reason},
        {1, QStringLiteral("时间"), QStringLiteral("100%_"), QString(), true, QString()}};
    return row;
}

inline line::Verdict verdict(std::uint64_t sequence, bool isOk = true)
{
    line::Verdict verdict;
    verdict.sequence = sequence;
    verdict.takenAt = QDateTime(QDate(2026, 11, 21), QTime(6, 0), Qt::UTC).addSecs(static_cast<qint64>(sequence));
    verdict.job = QStringLiteral("carton");
    verdict.isOk = isOk;
    verdict.reason = isOk ? line::Reason::none : line::Reason::textDiffers;
    line::RegionReading reading;
    reading.text = QStringLiteral("LOT:A%1").arg(sequence);
    verdict.readings.append(reading);
    verdict.picture = std::make_shared<const cv::Mat>(8, 16, CV_8UC3, cv::Scalar(200, 100, 50));
    return verdict;
}

inline QList<qint64> numbers(const QList<line::HistoryRow>& rows)
{
    QList<qint64> result;
    for (const line::HistoryRow& row : rows) {
        result.append(row.sequence);
    }
    return result;
}

} // namespace scribo::test
