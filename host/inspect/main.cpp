#include "inspect/command.h"
#include "inspect/help.h"

#include <QGuiApplication>
#include <QTextCodec>

#include <cstdio>

using namespace scribo::host;

namespace {

int run(const QStringList& arguments, HostLog& log)
{
    const auto options = parseOptions(arguments);
    if (!options) {
        std::fprintf(stderr, "scribo-inspect: %s\nTry: scribo-inspect --help\n", options.error().message.c_str());
        return ExitCode::fault;
    }
    if (options->help) {
        std::fputs(helpText, stdout);
        return ExitCode::allOk;
    }
    if (options->version) {
        std::puts("scribo-inspect " SCRIBO_VERSION);
        return ExitCode::allOk;
    }
    return Command(*options, log).run();
}

/// `code`, or that of a fault when standard output did not take everything that was printed.
int afterOutput(int code)
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return code;
    }
    std::fputs("scribo-inspect: standard output cannot be written\n", stderr);
    return ExitCode::fault;
}

} // namespace

int main(int argc, char** argv)
{
    // File names and texts are UTF-8 in every locale: a station's service often runs without one.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // Overlays are drawn with fonts, which need a Qt platform. This one works without a display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    google::InitGoogleLogging(argv[0]);
    HostLog log;
    // Qt gets the program's name only: it would take --plugin and other options for its own.
    int programOnly = 1;
    const QGuiApplication application(programOnly, argv);
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return afterOutput(run(arguments, log));
}
