#pragma once

#include "core/verdict.h"
#include "core/verdictsink.h"
#include "result.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <variant>

/// What goes over the broker, as bytes.
namespace scribo::line::mqtt {

/// {"command": "trigger"}
struct TriggerCommand
{
};
/// {"command": "job", "job": 3} or {"command": "job", "job": "carton"}
struct JobCommand
{
    std::variant<int, QString> job;
};
/// {"command": "lot", "lot": "A4827"}
struct LotCommand
{
    QString lot;
};
/// {"command": "counter", "counter": 41}
struct CounterCommand
{
    std::int64_t counter = 0;
};

/// A command and, with "id", a name for it that its answer repeats. The same id again is the same command.
struct Command
{
    QString id;
    std::variant<TriggerCommand, JobCommand, LotCommand, CounterCommand> what;
};

/// Reads a command. Fails with what is wrong with it.
Result<Command> parseCommand(const QByteArray& payload);

/// The largest payload of a command that is looked at.
constexpr int mostCommandBytes = 4096;

/// A JSON object of a verdict, without its picture.
QByteArray resultMessage(const QString& station, const Verdict& verdict);
/// A JSON object of what the station tells about itself.
QByteArray statusMessage(const EngineStatus& status);
/// A JSON object that answers a command: `sequence` is that of a trigger, `error` why it was refused (empty: it was
/// not).
QByteArray answerMessage(const QString& id, std::uint64_t sequence, const QString& error);
/// One word for the station's state, for those who want no more: "ready" or "fault". Being busy counts as ready.
QByteArray stateWord(const EngineStatus& status);

} // namespace scribo::line::mqtt
