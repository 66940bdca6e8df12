#include "arguments.h"
#include "enginereport.h"
#include "loadedengine.h"
#include "text.h"
#include "tool.h"

#include "format/enginefile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace scribo::tool {

namespace {

constexpr char help[] = R"(Shows what an engine holds.

  scribo-engine inspect ENGINE.trt [--json]

  --json   one JSON object instead of the tables

The tables show the bindings with their shapes, and the operations in the order in which they run:
the shapes of their results at the smallest and the largest width, and the shapes of their weights.
The lines above them give the number of weights and the multiply-adds of one run.
)";

QString shapesText(const std::vector<Shape>& shapes)
{
    QStringList parts;
    for (const Shape& shape : shapes) {
        parts << shapeText(shape);
    }
    return parts.join(QLatin1Char(' '));
}

QString asText(const EngineReport& report, const LoadedEngine& engine, const QString& path)
{
    QString text = QStringLiteral("%1: %2, format %3, built by %4 from %5\n")
                       .arg(path, bytesText(engine.file().size()), QString::number(format::engineFormatVersion),
                           report.builder, report.source);
    text += QStringLiteral("widths %1 to %2; %3 weights; %4 multiply-adds at width %1, %5 at width %2\n\n")
                .arg(QString::number(report.minimumWidth), QString::number(report.maximumWidth),
                    groupedText(report.weightCount), groupedText(report.multiplyAddsNarrowest),
                    groupedText(report.multiplyAddsWidest));
    const QString narrowest = QStringLiteral("at width %1").arg(report.minimumWidth);
    const QString widest = QStringLiteral("at width %1").arg(report.maximumWidth);
    QList<QStringList> rows = {{"", "binding", "name", "shape", narrowest, widest}};
    for (const BindingReport& binding : report.bindings) {
        rows << QStringList{QString::number(rows.size() - 1), binding.isInput ? "input" : "output", binding.name,
            shapeText(binding.declared), shapeText(binding.narrowest), shapeText(binding.widest)};
    }
    text += table(rows) + QLatin1Char('\n');
    rows = {{"", "operation", "node", narrowest, widest, "weights", "details"}};
    for (const OperationReport& operation : report.operations) {
        rows << QStringList{QString::number(rows.size() - 1), operation.kind, operation.name,
            shapeText(operation.narrowest), shapeText(operation.widest), shapesText(operation.weights),
            operation.details};
    }
    return text + table(rows);
}

QJsonArray jsonShape(const Shape& shape)
{
    QJsonArray extents;
    for (std::int64_t extent : shape) {
        extents << static_cast<qint64>(extent);
    }
    return extents;
}

QJsonObject jsonBinding(const BindingReport& binding)
{
    return {{"name", binding.name}, {"input", binding.isInput}, {"shape", jsonShape(binding.declared)},
        {"shapeAtMinimumWidth", jsonShape(binding.narrowest)}, {"shapeAtMaximumWidth", jsonShape(binding.widest)}};
}

QJsonObject jsonOperation(const OperationReport& operation)
{
    QJsonArray weights;
    for (const Shape& shape : operation.weights) {
        weights << jsonShape(shape);
    }
    return {{"kind", operation.kind}, {"node", operation.name}, {"details", operation.details}, {"weights", weights},
        {"shapeAtMinimumWidth", jsonShape(operation.narrowest)}, {"shapeAtMaximumWidth", jsonShape(operation.widest)},
        {"multiplyAddsAtMinimumWidth", static_cast<qint64>(operation.multiplyAddsNarrowest)},
        {"multiplyAddsAtMaximumWidth", static_cast<qint64>(operation.multiplyAddsWidest)}};
}

QJsonObject asJson(const EngineReport& report, const LoadedEngine& engine, const QString& path)
{
    QJsonArray bindings, operations;
    for (const BindingReport& binding : report.bindings) {
        bindings << jsonBinding(binding);
    }
    for (const OperationReport& operation : report.operations) {
        operations << jsonOperation(operation);
    }
    return {{"file", path}, {"bytes", static_cast<qint64>(engine.file().size())},
        {"formatVersion", static_cast<int>(format::engineFormatVersion)}, {"builder", report.builder},
        {"source", report.source}, {"minimumWidth", report.minimumWidth}, {"maximumWidth", report.maximumWidth},
        {"weights", static_cast<qint64>(report.weightCount)},
        {"multiplyAddsAtMinimumWidth", static_cast<qint64>(report.multiplyAddsNarrowest)},
        {"multiplyAddsAtMaximumWidth", static_cast<qint64>(report.multiplyAddsWidest)}, {"bindings", bindings},
        {"operations", operations}};
}

} // namespace

ExitCode inspectCommand(const QStringList& arguments, Streams streams)
{
    Arguments command("inspect", help, "ENGINE.trt");
    command.addOption(QCommandLineOption(QStringLiteral("json")));
    if (const auto over = command.read(arguments, streams)) {
        return *over;
    }
    const Result<LoadedEngine> engine = LoadedEngine::read(command.file());
    if (!engine) {
        return failed(streams, command.file(), engine.error());
    }
    const Result<EngineReport> report = describeEngine(engine->network());
    if (!report) {
        return failed(streams, command.file(), report.error());
    }
    if (command.isSet(QStringLiteral("json"))) {
        streams.out << QJsonDocument(asJson(*report, *engine, command.file())).toJson().toStdString();
    } else {
        streams.out << asText(*report, *engine, command.file()).toStdString();
    }
    return Success;
}

} // namespace scribo::tool
