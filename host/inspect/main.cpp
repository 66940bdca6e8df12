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

/// `code`, unless standard output did not take what was printed: what nobody can read is a fault.
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
    // File names and texts are UTF-8 whatever the locale: a station's service often runs without one.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // Overlays are drawn with fonts, which need a window system; none is asked for, since no window opens.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    google::InitGoogleLogging(argv[0]);
    HostLog log;
    // The command line is ours alone: Qt would take --plugin and others for its own.
    int programOnly = 1;
    const QGuiApplication application(programOnly, argv);
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return afterOutput(run(arguments, log));
}
