#include "command.h"

#include "parameternumbers.h"
#include "parameters.h"
#include "picturereader.h"
#include "places.h"
#include "settingsfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QThreadPool>

#include <cstdio>

#include <unistd.h>

Command::Command(const Options& options, HostLog& log)
    : options(options)
    , log(log)
{
}

int Command::run()
{
    pictures = listPictures(options.pictures, QDir::current());
    if (!openLog() || !readPlan() || !loadProcessor() || !applyOptions()) {
        return ExitCode::fault;
    }
    if (options.listModels || options.listParameters) {
        if (options.listModels) {
            listModels();
        }
        if (options.listParameters) {
            listParameters();
        }
        return hadFault ? ExitCode::fault : ExitCode::allOk;
    }
    if (!chooseModel() || !checkComparison() || !openArchive() || !openOutputs()) {
        return ExitCode::fault;
    }

    QJsonObject settings;
    processor->saveParams(settings);
    processor->loadParams(settings); // all at once, so that a model is loaded once

    inspector = std::make_unique<Inspector>(*processor, tool);
    inspectAll();
    finish();
    if (hadFault) {
        return ExitCode::fault;
    }
    return totals.ng > 0 ? ExitCode::someNg : ExitCode::allOk;
}

// Before the first picture

bool Command::openLog()
{
    log.setVerbose(options.verbose);
    QString error;
    if (log.open(options.log.isEmpty() ? defaultLogFile() : options.log, &error)) {
        return true;
    }
    if (!options.log.isEmpty()) {
        return fault(error);
    }
    // A log that nobody asked for stops nothing.
    std::fprintf(stderr, "scribo-inspect: no log: %s\n", error.toUtf8().constData());
    return true;
}

bool Command::readPlan()
{
    plan = RegionPlan(options.regions);
    QString error;
    return options.regionsFile.isEmpty() || plan.readFile(options.regionsFile, &error) || fault(error);
}

bool Command::loadProcessor()
{
    const QString programFolder = QCoreApplication::applicationDirPath();
    const QString file = findPlugin(options.plugin, programFolder);
    QString error;
    if (!findWorkFolder(options.work, programFolder, &workFolder, &error)) {
        return fault(error);
    }
    // Models are listed, and loaded, relative to the working directory.
    if (!QDir::setCurrent(workFolder)) {
        return fault(workFolder + QStringLiteral(": cannot be entered"));
    }
    if (!plugin.load(file, &error)) {
        return fault(error);
    }
    processor = plugin.makeInstance(&tool);
    return processor != nullptr || fault(file + QStringLiteral(": makes no instance"));
}

bool Command::applyOptions()
{
    QString error;
    if (!options.settings.isEmpty() && !readSettings(options.settings, *processor, &error)) {
        return fault(error);
    }
    for (const QString& assignment : options.assignments) {
        if (!setParameter(*processor, assignment, &error)) {
            return fault(QStringLiteral("--set: ") + error);
        }
    }
    if (!applyComparison()) {
        return false;
    }
    if (!options.model.isEmpty() && !setParameter(*processor, ParameterNumber::model, options.model, &error)) {
        return fault(QStringLiteral("--model: ") + error);
    }
    const QString switches = QStringLiteral("%1,%2").arg(options.saveOk ? QStringLiteral("on") : QStringLiteral("off"),
        options.saveNg ? QStringLiteral("on") : QStringLiteral("off"));
    if (options.saveGiven && !setParameter(*processor, ParameterNumber::save, switches, &error)) {
        return fault(QStringLiteral("--save: ") + error);
    }
    return true;
}

bool Command::applyComparison()
{
    QString error;
    const auto set = [&](int number, const QString& value, const char* option) {
        return setParameter(*processor, number, value, &error) || fault(QLatin1String(option) + error);
    };
    if (options.compare
        && !set(ParameterNumber::compare, QString::number(static_cast<int>(*options.compare) + 1), "--compare: ")) {
        return false;
    }
    if (options.reference && !set(ParameterNumber::reference, *options.reference, "--reference: ")) {
        return false;
    }
    return options.count.isEmpty() || set(ParameterNumber::count, options.count, "--count: ");
}

bool Command::chooseModel()
{
    const QStringList models = modelNames(*processor);
    if (models.isEmpty()) {
        return fault(QDir(workFolder).filePath(QStringLiteral("model")) + QStringLiteral(": holds no model"));
    }
    const QString selected
        = parameterState(*processor, ParameterNumber::model)[QStringLiteral("selectedText")].toString();
    if (models.contains(selected)) {
        return true;
    }
    if (!selected.isEmpty()) {
        return fault(QStringLiteral("no such model: \"%1\" (%2)").arg(selected, models.join(QStringLiteral(", "))));
    }
    QString error;
    return setParameter(*processor, ParameterNumber::model, models.first(), &error) || fault(error);
}

/// What was asked for must be checked: a verdict OK for a reason that nobody asked for ships bad products.
bool Command::checkComparison()
{
    const Comparison comparison = comparisonOf(*processor);
    if (comparison == Comparison::off && (options.reference || !options.count.isEmpty())) {
        return fault(QStringLiteral("%1 is looked at only when readings are compared: add --compare fixed or auto")
                         .arg(options.reference ? QStringLiteral("--reference") : QStringLiteral("--count")));
    }
    if (comparison != Comparison::fixed && plan.hasReferences()) {
        return fault(options.regionsFile
            + QStringLiteral(": \"reference\" is looked at only by fixed comparison: add --compare fixed"));
    }
    if (comparison == Comparison::off && plan.hasCounts()) {
        return fault(options.regionsFile
            + QStringLiteral(": \"count\" is looked at only when readings are compared: add --compare fixed or auto"));
    }
    const QString reference
        = parameterState(*processor, ParameterNumber::reference)[QStringLiteral("values")].toString();
    if (comparison == Comparison::fixed && reference.isEmpty() && !options.reference && !plan.allHaveReferences()) {
        return fault(QStringLiteral("fixed comparison needs --reference TEXT, or a \"reference\" for every region"));
    }
    if (comparison == Comparison::automatic && plan.hasSeveral()) {
        return fault(QStringLiteral("automatic comparison learns one text: give one region for each picture"));
    }
    return true;
}

bool Command::openArchive()
{
    tool.setIdentity(options.identity);
    const bool isRemovable = !options.removable.isEmpty();
    const QString folder = isRemovable ? options.removable : options.archive;
    if (folder.isEmpty()) {
        return true;
    }
    const QJsonArray switches = parameterState(*processor, ParameterNumber::save)[QStringLiteral("values")].toArray();
    if (!switches.contains(true)) {
        return fault(QStringLiteral("nothing would be archived: add --save ok, ng or ok,ng"));
    }
    if (!QDir().mkpath(folder)) {
        return fault(folder + QStringLiteral(": the folder cannot be made"));
    }
    tool.setArchiveFolder(options.archive);
    tool.setRemovableFolder(options.removable);
    tool.allowSaving(true);
    archive = std::make_unique<ArchiveAccount>(options.archive, options.removable, options.identity);
    return true;
}

bool Command::openOutputs()
{
    QString error;
    if (!options.overlay.isEmpty() && !overlays.open(options.overlay, pictures, &error)) {
        return fault(error);
    }
    for (const QString& path : std::as_const(options.records)) {
        records.push_back(std::make_unique<RecordFile>());
        if (!records.back()->open(path, &error)) {
            return fault(error);
        }
    }
    return true;
}

// Lists

void Command::listModels()
{
    const QStringList models = modelNames(*processor);
    for (const QString& model : models) {
        print(model.toUtf8() + '\n');
    }
    if (models.isEmpty()) {
        fault(QDir(workFolder).filePath(QStringLiteral("model")) + QStringLiteral(": holds no model"));
    }
}

void Command::listParameters()
{
    int number = 0;
    for (ParamWrap* const parameter : *processor->params()) {
        const QString value = describeParameter(*parameter);
        const QString line = QStringLiteral("%1  %2").arg(++number, 2).arg(parameter->name);
        print((value.isEmpty() ? line : line + QStringLiteral(": ") + value).toUtf8() + '\n');
    }
}

// Pictures

void Command::inspectAll()
{
    QStringList names;
    for (const PictureFile& picture : std::as_const(pictures)) {
        names.append(picture.name);
    }
    if (!options.json && !options.quiet) {
        table = std::make_unique<ResultTable>(names);
        print(table->header().toUtf8());
    }
    progress = std::make_unique<ProgressBar>(stderr, isatty(fileno(stderr)) == 1, options.quiet ? 0 : pictures.size());
    for (int i = 0; i < pictures.size(); ++i) {
        progress->show(i);
        const PictureResult result = inspectPicture(pictures[i]);
        progress->hide();
        report(result);
        // A file is there sooner than an item on the line: without the pause pictures would be dropped that a
        // station saves.
        if (archive) {
            QThreadPool::globalInstance()->waitForDone();
        }
    }
}

PictureResult Command::inspectPicture(const PictureFile& picture)
{
    PictureResult faulty;
    faulty.picture = picture.name;
    faulty.fault = picture.fault;
    cv::Mat pixels;
    if (!faulty.fault.isEmpty() || !readPicture(picture.path, &pixels, &faulty.fault)) {
        return faulty;
    }
    QList<TaughtRegion> regions;
    if (!plan.regionsFor(picture.name, QSize(pixels.cols, pixels.rows), &regions, &faulty.fault)) {
        return faulty;
    }
    return inspector->inspect(picture.name, pixels, regions);
}

void Command::report(const PictureResult& result)
{
    totals.add(result);
    if (options.json && !options.quiet) {
        print(toJsonLine(result) + '\n');
    }
    if (table) {
        print(table->rows(result).toUtf8());
    }
    if (!result.fault.isEmpty()) {
        fault(result.picture + QStringLiteral(": ") + result.fault);
        return;
    }
    reportUnread(result);
    QString error;
    for (const auto& file : records) {
        if (!file->write(result, &error)) {
            fault(error);
        }
    }
    if (!options.overlay.isEmpty() && !overlays.write(result.picture, inspector->overlay(), &error)) {
        fault(error);
    }
    for (const RegionResult& region : result.regions) {
        if (archive) {
            archive->add(region);
        }
    }
}

/// A region that could not be read is NG, but what is to be seen to is the reason: a model that could not be
/// loaded, mostly, and then it is the same for every region.
void Command::reportUnread(const PictureResult& result)
{
    for (const RegionResult& region : result.regions) {
        const QString message = unreadMessage(region).trimmed();
        if (message.isEmpty()) {
            continue;
        }
        hadFault = true;
        if (!reported.contains(message)) {
            fault(QStringLiteral("%1: not read: %2").arg(result.picture, message));
        }
        reported.insert(message);
    }
}

// The end

void Command::finishArchive()
{
    const ArchiveAccount::Outcome outcome = archive->finish();
    std::fprintf(options.json ? stderr : stdout, "%s\n", outcome.summary().toUtf8().constData());
    if (outcome.lost > 0) {
        fault(QStringLiteral("%1 pictures did not reach the archive").arg(outcome.lost));
    }
}

void Command::finish()
{
    std::fprintf(options.json ? stderr : stdout, "%s\n", totals.summary().toUtf8().constData());
    if (archive) {
        finishArchive();
    }
    QString error;
    if (!options.saveSettings.isEmpty() && !writeSettings(options.saveSettings, *processor, &error)) {
        fault(error);
    }
}

bool Command::fault(const QString& message)
{
    hadFault = true;
    std::fflush(stdout);
    std::fprintf(stderr, "scribo-inspect: %s\n", message.toUtf8().constData());
    return false;
}

void Command::print(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}
