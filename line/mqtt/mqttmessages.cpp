#include "mqtt/mqttmessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace scribo::line::mqtt {

namespace {

const QString jobKey = QStringLiteral("job");

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QString verdictWord(bool isOk)
{
    return isOk ? QStringLiteral("OK") : QStringLiteral("NG");
}

bool isWhole(const QJsonValue& value, double least, double most)
{
    const double number = value.toDouble();
    return value.isDouble() && std::floor(number) == number && number >= least && number <= most;
}

Result<Command> jobCommand(const QString& id, const QJsonValue& job)
{
    if (job.isString()) {
        return Command{id, JobCommand{job.toString()}};
    }
    constexpr double mostJobs = 65535; // what a PLC can name
    if (isWhole(job, 0, mostJobs)) {
        return Command{id, JobCommand{job.toInt()}};
    }
    return failure("\"job\" is neither a number from 0 to 65535 nor a name");
}

QJsonObject toJson(const RegionReading& reading)
{
    return {
        {QStringLiteral("region"), reading.region},
        {QStringLiteral("name"), reading.name},
        {QStringLiteral("text"), reading.text},
        {QStringLiteral("expected"), reading.expected},
        {QStringLiteral("verdict"), verdictWord(reading.isOk)},
        {QStringLiteral("reason"), static_cast<int>(reading.reason)},
        {QStringLiteral("reasonText"), reading.reasonText},
    };
}

} // namespace

Result<Command> parseCommand(const QByteArray& payload)
{
    if (payload.size() > mostCommandBytes) {
        return failure("the command is longer than 4096 bytes");
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(payload, &error);
    if (error.error != QJsonParseError::NoError) {
        return failure(
            QStringLiteral("not JSON at byte %1: %2").arg(error.offset).arg(error.errorString()).toStdString());
    }
    if (!document.isObject()) {
        return failure("not a JSON object");
    }
    const QJsonObject object = document.object();
    const QString id = object[QStringLiteral("id")].toString();
    const QString name = object[QStringLiteral("command")].toString();
    if (name == QStringLiteral("trigger")) {
        return Command{id, TriggerCommand{}};
    }
    if (name == jobKey) {
        return jobCommand(id, object[jobKey]);
    }
    if (name == QStringLiteral("lot")) {
        const QJsonValue lot = object[QStringLiteral("lot")];
        return lot.isString() ? Result<Command>(Command{id, LotCommand{lot.toString()}})
                              : failure("\"lot\" is not a text");
    }
    if (name == QStringLiteral("counter")) {
        constexpr double most = 9007199254740991.0; // 2^53 - 1: whole numbers are exact up to here in JSON
        const QJsonValue counter = object[QStringLiteral("counter")];
        return isWhole(counter, 0, most)
            ? Result<Command>(Command{id, CounterCommand{static_cast<std::int64_t>(counter.toDouble())}})
            : failure("\"counter\" is not a whole number from 0 to 2^53 - 1");
    }
    return failure("\"command\" is none of trigger, job, lot, counter");
}

QByteArray resultMessage(const QString& station, const Verdict& verdict)
{
    QJsonArray readings;
    for (const RegionReading& reading : verdict.readings) {
        readings.append(toJson(reading));
    }
    return compact({
        {QStringLiteral("station"), station},
        {QStringLiteral("sequence"), static_cast<qint64>(verdict.sequence)},
        {QStringLiteral("takenAt"), verdict.takenAt.toUTC().toString(Qt::ISODateWithMs)},
        {jobKey, verdict.job},
        {QStringLiteral("jobNumber"), verdict.jobNumber},
        {QStringLiteral("jobHash"), verdict.jobHash},
        {QStringLiteral("modelHash"), verdict.modelHash},
        {QStringLiteral("verdict"), verdictWord(verdict.isOk)},
        {QStringLiteral("reason"), static_cast<int>(verdict.reason)},
        {QStringLiteral("reasonText"), verdict.reasonText},
        {QStringLiteral("milliseconds"), verdict.milliseconds},
        {QStringLiteral("readings"), readings},
    });
}

QByteArray statusMessage(const EngineStatus& status)
{
    return compact({
        {QStringLiteral("state"), QString::fromLatin1(stateWord(status))},
        {QStringLiteral("faults"), QJsonArray::fromStringList(status.faults)},
        {jobKey, status.job},
        {QStringLiteral("jobNumber"), status.jobNumber},
    });
}

QByteArray answerMessage(const QString& id, std::uint64_t sequence, const QString& error)
{
    QJsonObject answer{{QStringLiteral("id"), id}, {QStringLiteral("accepted"), error.isEmpty()}};
    if (sequence > 0) {
        answer[QStringLiteral("sequence")] = static_cast<qint64>(sequence);
    }
    if (!error.isEmpty()) {
        answer[QStringLiteral("error")] = error;
    }
    return compact(answer);
}

QByteArray stateWord(const EngineStatus& status)
{
    return status.state == EngineState::fault ? "fault" : "ready";
}

} // namespace scribo::line::mqtt
