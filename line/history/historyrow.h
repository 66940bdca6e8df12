#pragma once

#include "core/verdict.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace scribo::line {

/// One region of an item, as the history keeps it.
struct HistoryReading
{
    int region = 0;
    QString name;
    QString text;
    QString expected;
    bool isOk = false;
    QString reason; ///< for people; empty when OK
};

/// One item, as the history keeps it. Station and sequence number together name it.
struct HistoryRow
{
    QString station;
    qint64 sequence = 0;
    QDateTime takenAt; ///< UTC, to the millisecond
    QString job;
    QString jobHash;
    QString modelHash;
    bool isOk = false;
    int reasonCode = 0; ///< see Reason
    QString reason; ///< for people; empty when OK
    double milliseconds = 0; ///< from the trigger to the verdict
    QString picture; ///< file of the whole picture, below the station's picture folder; empty: it was not kept
    QList<HistoryReading> readings;
};

/// What the history keeps of a verdict whose picture lies in `picture`.
HistoryRow historyRow(const QString& station, const Verdict& verdict, const QString& picture);

/// A change of something that matters for verdicts, and who made it.
struct HistoryChange
{
    qint64 number = 0; ///< of the station, from 1; given when it is written
    QDateTime at; ///< UTC
    QString who;
    QString what;
    QString oldValue;
    QString newValue;
};

} // namespace scribo::line
