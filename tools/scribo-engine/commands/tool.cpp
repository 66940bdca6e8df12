#include "tool.h"

#include <exception>

namespace scribo::tool {

namespace {

constexpr char help[] = R"(Makes engines for Scribo's CPU runtime, and looks into them.

  scribo-engine build MODEL.onnx -o ENGINE.trt   make an engine from an ONNX model
  scribo-engine package MODEL.onnx --keys ...    make a model package from a published model
  scribo-engine inspect ENGINE.trt               show what an engine holds
  scribo-engine check FOLDER/ENGINE.trt          check a model package as the plug-in will see it
  scribo-engine bench ENGINE.trt                 time an engine on this machine

  scribo-engine COMMAND --help                   the options of a command
  scribo-engine --help | --version               this text, the version

Exit code: 0 done, 1 the model, engine or package is at fault, 2 wrong usage.
)";

struct Command
{
    const char* name;
    ExitCode (*run)(const QStringList& arguments, Streams streams);
};

constexpr Command commands[] = {
    {"build", buildCommand},
    {"package", packageCommand},
    {"inspect", inspectCommand},
    {"check", checkCommand},
    {"bench", benchCommand},
};

ExitCode dispatch(const QStringList& arguments, Streams streams)
{
    const QString name = arguments.value(0);
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        streams.out << help;
        return Success;
    }
    if (name == QLatin1String("--version")) {
        streams.out << "scribo-engine " SCRIBO_VERSION "\n";
        return Success;
    }
    for (const Command& command : commands) {
        if (name == QLatin1String(command.name)) {
            return command.run(arguments.mid(1), streams);
        }
    }
    if (name.isEmpty()) {
        streams.err << "scribo-engine: a command is needed; see scribo-engine --help\n";
    } else {
        streams.err << "scribo-engine: there is no command or option '" << name.toStdString()
                    << "'; see scribo-engine --help\n";
    }
    return WrongUsage;
}

/// Results that did not arrive, on a full disk for one, are as good as none.
ExitCode finish(ExitCode code, Streams streams)
{
    if (streams.out.flush()) {
        return code;
    }
    streams.err << "scribo-engine: the output cannot be written\n";
    return code == Success ? Failure : code;
}

} // namespace

ExitCode failed(Streams streams, const QString& path, const Faults& faults)
{
    for (const std::string& fault : faults) {
        streams.err << path.toStdString() << ": " << fault << "\n";
    }
    return Failure;
}

ExitCode failed(Streams streams, const QString& path, const Error& error)
{
    return failed(streams, path, Faults{error.message});
}

ExitCode run(const QStringList& arguments, Streams streams) noexcept
{
    try {
        return finish(dispatch(arguments, streams), streams);
    } catch (const std::bad_alloc&) {
        streams.err << "scribo-engine: out of memory\n";
    } catch (const std::exception& exception) {
        streams.err << "scribo-engine: internal error: " << exception.what() << "\n";
    }
    return Failure;
}

} // namespace scribo::tool
