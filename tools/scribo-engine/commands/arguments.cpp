#include "arguments.h"

#include "resulttext.h"

namespace scribo::tool {

Arguments::Arguments(const char* command, const char* help, const char* wantedFile)
    : command(command)
    , help(help)
    , wantedFile(wantedFile)
{
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, {}});
}

std::optional<ExitCode> Arguments::read(const QStringList& arguments, Streams streams)
{
    // The parser takes the first entry for the program's name.
    const bool understood = parser.parse(QStringList{QString::fromLatin1(command)} + arguments);
    if (!understood) {
        return wrongUsage(parser.errorText(), streams);
    }
    if (parser.isSet(QStringLiteral("help"))) {
        streams.out << help;
        return Success;
    }
    const QStringList files = parser.positionalArguments();
    if (files.isEmpty()) {
        return wrongUsage(QStringLiteral("%1 is missing").arg(QLatin1String(wantedFile)), streams);
    }
    if (files.size() > 1) {
        return wrongUsage(QStringLiteral("one %1 at a time, but '%2' follows")
                              .arg(QLatin1String(wantedFile), files.mid(1).join(QStringLiteral("', '"))),
            streams);
    }
    return std::nullopt;
}

Result<int> Arguments::number(const QString& option) const
{
    bool isNumber = false;
    const int result = value(option).toInt(&isNumber);
    if (!isNumber) {
        return failure(QStringLiteral("--%1 needs a whole number, not '%2'").arg(option, value(option)));
    }
    return result;
}

ExitCode Arguments::wrongUsage(const Error& error, Streams streams) const
{
    return wrongUsage(textOf(error), streams);
}

ExitCode Arguments::wrongUsage(const QString& reason, Streams streams) const
{
    streams.err << "scribo-engine " << command << ": " << reason.toStdString() << "\n"
                << "see scribo-engine " << command << " --help\n";
    return WrongUsage;
}

} // namespace scribo::tool
