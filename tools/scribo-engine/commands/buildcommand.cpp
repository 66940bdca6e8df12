#include "arguments.h"
#include "build.h"
#include "enginefile.h"
#include "enginerunner.h"
#include "loadedengine.h"
#include "text.h"
#include "tool.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSaveFile>

namespace scribo::tool {

namespace {

constexpr char help[] = R"(Makes an engine for the CPU runtime from an ONNX model.

  scribo-engine build MODEL.onnx -o ENGINE.trt [--min-width 32] [--max-width 320]

  -o, --output FILE    the engine file; written whole or not at all
  --min-width COLUMNS  the narrowest picture that the engine takes (32)
  --max-width COLUMNS  the widest picture that the engine takes (320)

The model has one input, batch x channels x height x width, with a batch of 1, fixed channels
and height and a dynamic width, as PyTorch exports it with dynamic_axes; opsets 7 to 21 are read.
Everything in the model that is not supported is listed.
)";

/// Runs the finished engine once at each end of its widths, so that none is written that the
/// runtime would refuse.
bool prove(const std::vector<std::uint8_t>& engine, const builder::WidthRange& widths, QString* error)
{
    EngineRunner runner;
    if (!runner.load(engine.data(), engine.size(), error)) {
        return false;
    }
    for (int width : {widths.minimum, widths.maximum}) {
        std::vector<RunOutput> outputs;
        if (!runner.run(width, testPicture(runner.pictureSize(width)), &outputs, error)) {
            *error = QStringLiteral("a trial run at width %1 failed: %2").arg(width).arg(*error);
            return false;
        }
    }
    return true;
}

bool save(const QString& path, const std::vector<std::uint8_t>& engine, QString* error)
{
    // Replacing a device by a file is never what was meant.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        *error = QStringLiteral("this is no file that could be replaced");
        return false;
    }
    QSaveFile file(path);
    const auto size = static_cast<qint64>(engine.size());
    // Without the flush a small file meets a full disk inside commit(), which does not notice.
    if (!file.open(QIODevice::WriteOnly) || file.write(reinterpret_cast<const char*>(engine.data()), size) != size
        || !file.flush() || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

ExitCode fail(Streams streams, const QString& path, const QString& reason)
{
    streams.err << path.toStdString() << ": " << reason.toStdString() << "\n";
    return Failure;
}

ExitCode build(const QString& model, const QString& output, const builder::WidthRange& widths, Streams streams)
{
    QElapsedTimer timer;
    timer.start();
    QString error;
    FileBytes file;
    if (!file.read(model, &error)) {
        return fail(streams, model, error);
    }
    builder::Problems problems;
    const std::string source = QFileInfo(model).fileName().toStdString();
    const auto network = builder::buildNetwork(file.data(), file.size(), {widths, source}, &problems);
    if (!network) {
        for (const std::string& problem : problems) {
            fail(streams, model, QString::fromStdString(problem));
        }
        return Failure;
    }
    const std::vector<std::uint8_t> engine = format::writeEngine(*network);
    if (engine.empty()) {
        return fail(streams, model, QStringLiteral("its constants are too large for an engine file"));
    }
    if (!prove(engine, widths, &error)) {
        return fail(streams, model, error);
    }
    if (!save(output, engine, &error)) {
        return fail(streams, output, error);
    }
    const QString summary
        = QStringLiteral("%1: %2, %3, widths %4 to %5, built in %6 s\n")
              .arg(output, bytesText(engine.size()), countText(network->operations.size(), "operation"))
              .arg(widths.minimum)
              .arg(widths.maximum)
              .arg(static_cast<double>(timer.elapsed()) / 1000, 0, 'f', 1);
    streams.out << summary.toStdString();
    return Success;
}

} // namespace

ExitCode buildCommand(const QStringList& arguments, Streams streams)
{
    const QString output = QStringLiteral("output");
    const QString minWidth = QStringLiteral("min-width");
    const QString maxWidth = QStringLiteral("max-width");
    Arguments command("build", help, "MODEL.onnx");
    command.addOption({{QStringLiteral("o"), output}, {}, QStringLiteral("FILE")});
    command.addOption({minWidth, {}, QStringLiteral("COLUMNS"), QStringLiteral("32")});
    command.addOption({maxWidth, {}, QStringLiteral("COLUMNS"), QStringLiteral("320")});
    if (const auto over = command.read(arguments, streams)) {
        return *over;
    }
    if (command.value(output).isEmpty()) {
        return command.wrongUsage(QStringLiteral("-o ENGINE.trt is missing"), streams);
    }
    const std::optional<int> minimum = command.number(minWidth, streams);
    const std::optional<int> maximum = minimum ? command.number(maxWidth, streams) : std::nullopt;
    if (!maximum) {
        return WrongUsage;
    }
    if (*minimum < 1 || *maximum < *minimum || *maximum > builder::largestWidth) {
        return command.wrongUsage(
            QStringLiteral("widths go from 1 to %1, the smallest first").arg(builder::largestWidth), streams);
    }
    return build(command.file(), command.value(output), {*minimum, *maximum}, streams);
}

} // namespace scribo::tool
