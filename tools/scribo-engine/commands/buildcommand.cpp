#include "arguments.h"
#include "enginemaker.h"
#include "modeloptions.h"
#include "samefile.h"
#include "text.h"
#include "tool.h"
#include "wholefile.h"

#include <QElapsedTimer>

namespace scribo::tool {

namespace {

constexpr char usage[] = R"(Makes an engine for the CPU runtime from an ONNX model.

  scribo-engine build MODEL.onnx -o ENGINE.trt [OPTIONS]

  -o, --output FILE    the engine file; it is written as a whole or not at all
)";

constexpr char notes[] = R"(
The model has one input, batch x channels x height x width, with a batch of 1, fixed channels
and a dynamic width, as PyTorch exports it with dynamic_axes; opsets 7 to 21 are read.
Lists everything in the model that is not supported.
)";

ExitCode build(const QString& model, const QString& output, const builder::BuildOptions& options, Streams streams)
{
    QElapsedTimer timer;
    timer.start();
    const Result<FileBytes> file = FileBytes::read(model);
    if (!file) {
        return failed(streams, model, file.error());
    }
    const Checked<MadeEngine> engine = makeEngine(*file, options);
    if (!engine) {
        return failed(streams, model, engine.error());
    }
    if (const auto saved = writeWholeFile(output, engine->bytes.data(), engine->bytes.size()); !saved) {
        return failed(streams, output, saved.error());
    }
    const QString summary
        = QStringLiteral("%1: %2, %3, widths %4 to %5, built in %6 s\n")
              .arg(output, bytesText(engine->bytes.size()), countText(engine->network->operations.size(), "operation"))
              .arg(options.widths.minimum)
              .arg(options.widths.maximum)
              .arg(static_cast<double>(timer.elapsed()) / 1000, 0, 'f', 1);
    streams.out << summary.toStdString();
    return Success;
}

} // namespace

ExitCode buildCommand(const QStringList& arguments, Streams streams)
{
    static const std::string help = std::string(usage) + modelOptionsHelp + notes;
    const QString output = QStringLiteral("output");
    Arguments command("build", help.c_str(), "MODEL.onnx");
    command.addOption({{QStringLiteral("o"), output}, {}, QStringLiteral("FILE")});
    addModelOptions(&command);
    if (const auto over = command.read(arguments, streams)) {
        return *over;
    }
    if (command.value(output).isEmpty()) {
        return command.wrongUsage(QStringLiteral("-o ENGINE.trt is missing"), streams);
    }
    if (isSameFile(command.file(), command.value(output))) {
        return command.wrongUsage(QStringLiteral("-o names the model itself, which the engine would replace"), streams);
    }
    const Result<builder::BuildOptions> options = readModelOptions(command);
    return options ? build(command.file(), command.value(output), *options, streams)
                   : command.wrongUsage(options.error(), streams);
}

} // namespace scribo::tool
