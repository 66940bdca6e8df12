#include "arguments.h"
#include "enginereport.h"
#include "enginerunner.h"
#include "loadedengine.h"
#include "resulttext.h"
#include "text.h"
#include "tool.h"

#include "timing/enginetimer.h"

#include <numeric>

namespace scribo::tool {

namespace {

constexpr char help[] = R"(Times an engine on this machine.

  scribo-engine bench ENGINE.trt [--width W]... [--runs N] [--profile]

  --width W    a width to time, may be given several times; default: those of 64, 100, 160 and 320
               that the engine takes, or else the ends of its range
  --runs N     runs of each width (default 100)
  --profile    also shows the time of each operation at each width

For each width, the table shows the first run with its planning, the median and the best run on one
thread, the median on two threads, the number of threads that the runtime would choose, and the
memory of the plan. Profiles are taken on one thread. Close other programs before you time.
)";

constexpr int maximumRuns = 1'000'000;

QString millisecondsText(double milliseconds)
{
    return QString::number(milliseconds, 'f', 3) + QStringLiteral(" ms");
}

QList<int> usualWidths(const format::Network& network)
{
    QList<int> widths;
    for (int width : {64, 100, 160, 320}) {
        if (width >= network.minimum_width() && width <= network.maximum_width()) {
            widths << width;
        }
    }
    return widths.isEmpty() ? QList<int>{network.minimum_width(), network.maximum_width()} : widths;
}

/// The widths asked for, or the usual ones; an error when one cannot be timed.
Result<QList<int>> widthsToTime(const Arguments& command, const format::Network& network)
{
    QList<int> widths;
    for (const QString& text : command.values(QStringLiteral("width"))) {
        bool isNumber = false;
        const int width = text.toInt(&isNumber);
        if (!isNumber || width < network.minimum_width() || width > network.maximum_width()) {
            return failure(QStringLiteral("--width needs a whole number from %1 to %2, the engine's widths, not '%3'")
                               .arg(network.minimum_width())
                               .arg(network.maximum_width())
                               .arg(text));
        }
        widths << width;
    }
    return widths.isEmpty() ? usualWidths(network) : widths;
}

/// The runs of each width; an error when there cannot be so many.
Result<int> runsOf(const Arguments& command)
{
    const Result<int> runs = command.number(QStringLiteral("runs"));
    if (runs && (*runs < 1 || *runs > maximumRuns)) {
        return failure(QStringLiteral("--runs must lie between 1 and %1").arg(maximumRuns));
    }
    return runs;
}

/// A row for each operation that takes any time, in the order in which they run.
QString profileTable(const EngineReport& report, const std::vector<double>& spent)
{
    const double total = std::accumulate(spent.begin(), spent.end(), 0.0);
    QList<QStringList> rows = {{"", "operation", "node", "median", "share", "details"}};
    for (std::size_t i = 0; i < spent.size(); ++i) {
        if (spent[i] <= 0) {
            continue;
        }
        const OperationReport operation = i < report.operations.size()
            ? report.operations[i]
            : OperationReport{QStringLiteral("outputs"), {}, {}, {}, {}, {}};
        rows << QStringList{QString::number(i), operation.kind, operation.name, millisecondsText(spent[i]),
            QString::number(100 * spent[i] / total, 'f', 1) + QStringLiteral(" %"), operation.details};
    }
    return table(rows);
}

/// The times of all widths as tables, with profiles where there is a report; an error when a width cannot be planned.
Result<QString> timesOf(cpu::EngineTimer& timer, const EngineReport* report, const QList<int>& widths, int runs)
{
    QList<QStringList> rows = {{"width", "first run", "median", "best", "two threads", "choice", "plan"}};
    QString profiles;
    for (int width : widths) {
        const Result<cpu::WidthTimes> times = timer.time(width, runs);
        if (!times) {
            return tl::unexpected<Error>(times.error());
        }
        rows << QStringList{QString::number(width), millisecondsText(times->first), millisecondsText(times->median),
            millisecondsText(times->best), times->helped > 0 ? millisecondsText(times->helped) : QStringLiteral("-"),
            countText(static_cast<std::size_t>(times->threads), "thread"), bytesText(times->planBytes)};
        if (report) {
            profiles += QStringLiteral("\nwidth %1\n").arg(width) + profileTable(*report, timer.profile(runs));
        }
    }
    return table(rows) + profiles;
}

} // namespace

ExitCode benchCommand(const QStringList& arguments, Streams streams)
{
    const QString profile = QStringLiteral("profile");
    Arguments command("bench", help, "ENGINE.trt");
    command.addOption({QStringLiteral("width"), {}, QStringLiteral("W")});
    command.addOption({QStringLiteral("runs"), {}, QStringLiteral("N"), QStringLiteral("100")});
    command.addOption(QCommandLineOption(profile));
    if (const auto over = command.read(arguments, streams)) {
        return *over;
    }
    const Result<int> count = runsOf(command);
    if (!count) {
        return command.wrongUsage(count.error(), streams);
    }
    const Result<LoadedEngine> engine = LoadedEngine::read(command.file());
    if (!engine) {
        return failed(streams, command.file(), engine.error());
    }
    const Result<EngineReport> report = describeEngine(engine->network());
    if (!report) {
        return failed(streams, command.file(), report.error());
    }
    cpu::EngineTimer timer(testPicture);
    if (const Result<void> loaded = timer.load(engine->file().data(), engine->file().size()); !loaded) {
        return failed(streams, command.file(), loaded.error());
    }
    const Result<QList<int>> widths = widthsToTime(command, engine->network());
    if (!widths) {
        return command.wrongUsage(widths.error(), streams);
    }
    const Result<QString> text = timesOf(timer, command.isSet(profile) ? &*report : nullptr, *widths, *count);
    if (!text) {
        return failed(streams, command.file(), text.error());
    }
    streams.out << command.file().toStdString() << ": loaded in " << millisecondsText(timer.loadTime()).toStdString()
                << "; " << bytesText(timer.weightBytes()).toStdString() << " of weights in the kernels' order; "
                << countText(static_cast<std::size_t>(*count), "run").toStdString() << " a width\n\n"
                << text->toStdString();
    return Success;
}

} // namespace scribo::tool
