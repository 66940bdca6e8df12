#include "inspect/command.h"

#include "files/picturereader.h"
#include "files/settingsfile.h"
#include "parameternumbers.h"
#include "parameters.h"
#include "places.h"
#include "resulttext.h"
#include "settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QThreadPool>

#include <cstdio>

#include <unistd.h>

namespace scribo::host {

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

    activateSettings(*processor);
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
    const auto opened = log.open(options.log.isEmpty() ? defaultLogFile() : options.log);
    if (opened || !options.log.isEmpty()) {
        return succeeded(opened);
    }
    // Only a log that was asked for must be there.
    std::fprintf(stderr, "scribo-inspect: no log: %s\n", opened.error().message.c_str());
    return true;
}

bool Command::readPlan()
{
    if (options.regionsFile.isEmpty()) {
        plan = RegionPlan(options.regions);
        return true;
    }
    const auto read = RegionPlan::fromFile(options.regionsFile);
    if (!read) {
        return fault(read.error());
    }
    plan = *read;
    return true;
}

bool Command::loadProcessor()
{
    const QString programFolder = QCoreApplication::applicationDirPath();
    const QString file = findPlugin(options.plugin, programFolder);
    const auto found = findWorkFolder(options.work, programFolder);
    if (!found) {
        return fault(found.error());
    }
    workFolder = *found;
    // Models are listed, and loaded, relative to the working directory.
    if (!QDir::setCurrent(workFolder)) {
        return fault(workFolder + QStringLiteral(": cannot be entered"));
    }
    auto made = ProcessorPlugin::load(file).and_then(&Inspector::make);
    if (!made) {
        return fault(made.error());
    }
    inspector = std::move(*made);
    processor = &inspector->processor();
    return true;
}

bool Command::applyOptions()
{
    if (!options.settings.isEmpty() && !succeeded(readSettings(options.settings, *processor))) {
        return false;
    }
    for (const QString& assignment : options.assignments) {
        if (!succeeded(setParameter(*processor, assignment), "--set: ")) {
            return false;
        }
    }
    if (!applyComparison()) {
        return false;
    }
    if (!options.model.isEmpty()
        && !succeeded(setParameter(*processor, ParameterNumber::model, options.model), "--model: ")) {
        return false;
    }
    const QString switches = QStringLiteral("%1,%2").arg(options.saveOk ? QStringLiteral("on") : QStringLiteral("off"),
        options.saveNg ? QStringLiteral("on") : QStringLiteral("off"));
    return !options.saveGiven || succeeded(setParameter(*processor, ParameterNumber::save, switches), "--save: ");
}

bool Command::applyComparison()
{
    const auto set = [&](int number, const QString& value, const char* option) {
        return succeeded(setParameter(*processor, number, value), option);
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
    return succeeded(setParameter(*processor, ParameterNumber::model, models.first()));
}

/// Refuses a reference or a count that would not be compared: without the check that was asked for, bad products would
/// be OK.
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
    ArchivePlace place{options.identity, {}, {}, false};
    inspector->setArchive(place);
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
    place = {options.identity, options.archive, options.removable, true};
    inspector->setArchive(place);
    archive = std::make_unique<ArchiveAccount>(options.archive, options.removable, options.identity);
    return true;
}

bool Command::openOutputs()
{
    if (!options.overlay.isEmpty() && !succeeded(overlays.open(options.overlay, pictures))) {
        return false;
    }
    for (const QString& path : std::as_const(options.records)) {
        records.push_back(std::make_unique<RecordFile>());
        if (!succeeded(records.back()->open(path))) {
            return false;
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
        const PictureResult result{pictures[i].name, inspectPicture(pictures[i])};
        progress->hide();
        report(result);
        // Pictures come faster from files than on a line. Without this pause the archive would drop pictures that a
        // station saves.
        if (archive) {
            QThreadPool::globalInstance()->waitForDone();
        }
    }
}

Result<InspectionResult> Command::inspectPicture(const PictureFile& picture)
{
    if (!picture.fault.isEmpty()) {
        return failure(picture.fault);
    }
    const auto pixels = readPicture(picture.path);
    if (!pixels) {
        return tl::unexpected(pixels.error());
    }
    const auto regions = plan.regionsFor(picture.name, QSize(pixels->cols, pixels->rows));
    if (!regions) {
        return tl::unexpected(regions.error());
    }
    return inspector->inspect(*pixels, *regions);
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
    if (!result.inspection) {
        fault(result.picture + QStringLiteral(": ") + textOf(result.inspection.error()));
        return;
    }
    reportUnread(result.picture, *result.inspection);
    write(result.picture, *result.inspection);
}

/// A region that could not be read is NG, and the reason needs attention. Mostly the model could not be loaded, and
/// then the reason is the same for every region.
void Command::reportUnread(const QString& picture, const InspectionResult& result)
{
    for (const RegionResult& region : result.regions) {
        const QString message = unreadMessage(region).trimmed();
        if (message.isEmpty()) {
            continue;
        }
        hadFault = true;
        if (!reported.contains(message)) {
            fault(QStringLiteral("%1: not read: %2").arg(picture, message));
        }
        reported.insert(message);
    }
}

void Command::write(const QString& picture, const InspectionResult& result)
{
    for (const auto& file : records) {
        succeeded(file->write(picture, result));
    }
    if (!options.overlay.isEmpty()) {
        succeeded(overlays.write(picture, inspector->overlay()));
    }
    if (archive) {
        for (const RegionResult& region : result.regions) {
            archive->add(region);
        }
    }
}

// The end

void Command::finishArchive()
{
    const ArchiveAccount::Outcome outcome = archive->finish();
    std::fprintf(options.json ? stderr : stdout, "%s\n", outcome.summary().toUtf8().constData());
    if (outcome.lost > 0) {
        fault(outcome.lost == 1 ? QStringLiteral("1 picture did not reach the archive")
                                : QStringLiteral("%1 pictures did not reach the archive").arg(outcome.lost));
    }
}

void Command::finish()
{
    std::fprintf(options.json ? stderr : stdout, "%s\n", totals.summary().toUtf8().constData());
    if (archive) {
        finishArchive();
    }
    if (!options.saveSettings.isEmpty()) {
        succeeded(writeSettings(options.saveSettings, *processor));
    }
}

bool Command::fault(const QString& message)
{
    hadFault = true;
    std::fflush(stdout);
    std::fprintf(stderr, "scribo-inspect: %s\n", message.toUtf8().constData());
    return false;
}

bool Command::fault(const Error& error)
{
    return fault(textOf(error));
}

bool Command::succeeded(const Result<void>& result, const char* option)
{
    return result || fault(QLatin1String(option) + textOf(result.error()));
}

void Command::print(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

} // namespace scribo::host
