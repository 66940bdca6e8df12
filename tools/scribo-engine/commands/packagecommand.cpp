#include "modelfilename.h"
#include "modellist.h"
#include "modeloptions.h"
#include "packagecheck.h"
#include "packagemaker.h"
#include "resulttext.h"
#include "samefile.h"
#include "text.h"
#include "tool.h"
#include "wholefile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace scribo::tool {

namespace {

constexpr char usage[] = R"(Makes a model package from a published ONNX model: engine and configuration file.

  scribo-engine package MODEL.onnx --keys KEYS.txt --name ocr_NAME_p1_1_v1 -o FOLDER [OPTIONS]

  --keys KEYS.txt      the characters in class order without the blank: one in each line, or all
                       in one line; where the model has one class more, the last is a space
  --name NAME          the engine's name: five pieces, as docs/model-package.md says
  -o, --output FOLDER  where FOLDER/NAME.trt and its configuration go
)";

constexpr char notes[] = R"(
Where layout and soft-max are not given, the program finds them out. It checks the package as
scribo-engine check does, and writes nothing when there is a fault. It never replaces a
configuration file that says something else.
)";

ExitCode failed(Streams streams, const Faults& faults)
{
    for (const std::string& fault : faults) {
        streams.err << fault << "\n";
    }
    return Failure;
}

/// The two files of a package below a folder.
struct PackageFiles
{
    QString engine;
    QString configuration;
};

PackageFiles filesIn(const QDir& folder, const QString& name)
{
    const QString engine = folder.absoluteFilePath(name + QStringLiteral(".trt"));
    return {engine, splitModelFileName(engine)->configPath};
}

/// The error begins with the path of the file that cannot be written.
Result<void> save(const MadePackage& package, const PackageFiles& files)
{
    const auto naming = [](const QString& path) {
        return [path](const Error& error) { return Error{path.toStdString() + ": " + error.message}; };
    };
    const std::vector<std::uint8_t>& engine = package.engine.bytes;
    // The configuration first: without its engine it does nothing.
    return writeWholeFile(files.configuration, package.configuration)
        .map_error(naming(files.configuration))
        .and_then(
            [&] { return writeWholeFile(files.engine, engine.data(), engine.size()).map_error(naming(files.engine)); });
}

/// Checks the package in a folder where no plug-in sees it.
Result<PackageReport> check(const MadePackage& package, const QString& name)
{
    const QTemporaryDir trial;
    if (!trial.isValid()) {
        return failure(trial.errorString());
    }
    const PackageFiles files = filesIn(QDir(trial.path()), name);
    return save(package, files).map([&] { return checkPackage(files.engine); });
}

/// Whether the configuration may be written: it is new, or says the same already.
bool mayWrite(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return !file.exists() || (file.open(QIODevice::ReadOnly) && file.readAll() == content);
}

ExitCode makeAndSave(const PackageSource& source, const QString& name, const QString& folder, Streams streams)
{
    const Checked<MadePackage> package = makePackage(source);
    if (!package) {
        return failed(streams, package.error());
    }
    const Result<PackageReport> report = check(*package, name);
    if (!report) {
        return failed(streams, Faults{report.error().message});
    }
    if (!report->faults.isEmpty()) {
        return failed(streams, Faults{report->faults.join(QLatin1Char('\n')).toStdString()});
    }
    if (!QDir().mkpath(folder)) {
        return failed(streams, folder, Error{"the folder cannot be made"});
    }
    const PackageFiles files = filesIn(QDir(folder), name);
    if (!mayWrite(files.configuration, package->configuration)) {
        return failed(
            streams, files.configuration, Error{"it exists and says something else; remove it or take another name"});
    }
    if (const Result<void> saved = save(*package, files); !saved) {
        return failed(streams, Faults{saved.error().message});
    }
    for (const QString& note : package->notes + report->warnings) {
        streams.out << "note: " << note.toStdString() << "\n";
    }
    streams.out << files.configuration.toStdString() << "\n"
                << files.engine.toStdString() << ": " << bytesText(package->engine.bytes.size()).toStdString() << ", "
                << report->summary.toStdString() << "\n";
    return Success;
}

bool isEngineName(const QString& name)
{
    const QString file = name + QStringLiteral(".trt");
    return !name.contains(QLatin1Char('/')) && splitModelFileName(file) && isListedModelFile(file);
}

} // namespace

ExitCode packageCommand(const QStringList& arguments, Streams streams)
{
    static const std::string help = std::string(usage) + modelOptionsHelp + notes;
    const QString keys = QStringLiteral("keys");
    const QString name = QStringLiteral("name");
    const QString output = QStringLiteral("output");
    Arguments command("package", help.c_str(), "MODEL.onnx");
    command.addOption({keys, {}, QStringLiteral("KEYS.txt")});
    command.addOption({name, {}, QStringLiteral("NAME")});
    command.addOption({{QStringLiteral("o"), output}, {}, QStringLiteral("FOLDER")});
    addModelOptions(&command);
    if (const auto over = command.read(arguments, streams)) {
        return *over;
    }
    for (const QString& needed : {keys, name, output}) {
        if (command.value(needed).isEmpty()) {
            return command.wrongUsage(QStringLiteral("--%1 is missing").arg(needed), streams);
        }
    }
    if (!isEngineName(command.value(name))) {
        return command.wrongUsage(
            QStringLiteral("--name needs five pieces like ocr_printed_p1_1_v1, not '%1'").arg(command.value(name)),
            streams);
    }
    const Result<builder::BuildOptions> options = readModelOptions(command);
    if (!options) {
        return command.wrongUsage(options.error(), streams);
    }
    const PackageSource source = {command.file(), command.value(keys), *options, isLayoutGiven(command)};
    const PackageFiles files = filesIn(QDir(command.value(output)), command.value(name));
    for (const QString& file : {source.model, source.keys}) {
        if (isSameFile(file, files.engine)) {
            return command.wrongUsage(
                QStringLiteral("the engine would replace %1, which it is made from").arg(file), streams);
        }
    }
    return makeAndSave(source, command.value(name), command.value(output), streams);
}

} // namespace scribo::tool
