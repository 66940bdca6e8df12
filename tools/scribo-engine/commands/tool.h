#pragma once

#include "faults.h"

#include <QStringList>

#include <ostream>

/// The command scribo-engine, without its process: everything goes through arguments and streams.
namespace scribo::tool {

/// What the command ends with.
enum ExitCode { Success = 0, Failure = 1, WrongUsage = 2 };

struct Streams
{
    std::ostream& out; ///< results
    std::ostream& err; ///< what went wrong
};

/// Runs `scribo-engine` with these arguments (the program's name left out). Never throws.
ExitCode run(const QStringList& arguments, Streams streams) noexcept;

/// Tells the streams what is wrong with the file at `path`, a line for each fault, and returns the exit code for it.
ExitCode failed(Streams streams, const QString& path, const Faults& faults);
ExitCode failed(Streams streams, const QString& path, const Error& error);

/// The commands, with the arguments behind their names.
ExitCode buildCommand(const QStringList& arguments, Streams streams);
ExitCode inspectCommand(const QStringList& arguments, Streams streams);
ExitCode checkCommand(const QStringList& arguments, Streams streams);
ExitCode benchCommand(const QStringList& arguments, Streams streams);
ExitCode packageCommand(const QStringList& arguments, Streams streams);

} // namespace scribo::tool
