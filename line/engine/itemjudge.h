#pragma once

#include "core/frame.h"
#include "core/verdict.h"

#include <QDateTime>
#include <QJsonObject>

#include <cstdint>
#include <optional>

namespace scribo::line {

/// What is known of an item when its trigger comes.
struct ItemContext
{
    QDateTime at; ///< when the trigger came, in UTC
    QString lot; ///< empty: none is set
    std::optional<std::int64_t> counter; ///< none: it is not set
};

/// What a job says of one picture.
struct Judgement
{
    bool isOk = false;
    Reason reason = Reason::internalFault;
    QString reasonText; ///< for people; empty when OK
    QList<RegionReading> readings;
    double processMilliseconds = 0; ///< in the plug-in
    SharedPicture picture; ///< aligned; null: as the source gave it
};

/// How an item is recorded as that of a job.
struct JobIdentity
{
    QString name;
    int number = 0;
    QString jobHash; ///< SHA-256 of the job's files, in hexadecimal digits
    QString modelHash; ///< SHA-256 of the model's engine file, the same
};

/// A job that is ready: its model is loaded, its patch taught, its templates parsed. Used by one thread at a time.
class ItemJudge
{
public:
    virtual ~ItemJudge() = default;

    virtual const JobIdentity& identity() const = 0;
    /// What the source is set to for this job; see PictureSource::configure().
    virtual const QJsonObject& sourceSettings() const = 0;
    virtual Judgement judge(const Frame& frame, const ItemContext& context) = 0;
};

} // namespace scribo::line
