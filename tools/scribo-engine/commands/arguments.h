#pragma once

#include "tool.h"

#include <QCommandLineParser>

#include <optional>

namespace scribo::tool {

/// The options and the one file of a command.
class Arguments
{
public:
    /// `help` is what --help shows; `wantedFile` says what the command works on ("MODEL.onnx").
    Arguments(const char* command, const char* help, const char* wantedFile);

    void addOption(const QCommandLineOption& option) { parser.addOption(option); }

    /// Reads the arguments. Returns an exit code when the command ends here: after --help, or after wrong usage, which
    /// the streams have been told.
    std::optional<ExitCode> read(const QStringList& arguments, Streams streams);

    /// The file that the command works on.
    QString file() const { return parser.positionalArguments().value(0); }
    bool isSet(const QString& option) const { return parser.isSet(option); }
    QString value(const QString& option) const { return parser.value(option); }
    QStringList values(const QString& option) const { return parser.values(option); }
    /// The value as a whole number; the error says that it is none.
    Result<int> number(const QString& option) const;

    /// Tells the streams what is wrong with how the command was called.
    ExitCode wrongUsage(const Error& error, Streams streams) const;
    ExitCode wrongUsage(const QString& reason, Streams streams) const;

private:
    const char* command;
    const char* help;
    const char* wantedFile;
    QCommandLineParser parser;
};

} // namespace scribo::tool
