#include "packagecheck.h"

#include "enginereport.h"
#include "loadedengine.h"
#include "modelconfig.h"
#include "modelfilename.h"
#include "modellimits.h"
#include "modellist.h"
#include "resulttext.h"
#include "scorecheck.h"
#include "text.h"
#include "widthcheck.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <optional>

namespace scribo::tool {

namespace {

QString quoted(const std::string& text)
{
    return QLatin1Char('\'') + QString::fromStdString(text) + QLatin1Char('\'');
}

/// One check of a package: every step adds what it finds to the report.
class PackageCheck
{
public:
    explicit PackageCheck(const QString& enginePath)
        : enginePath(enginePath)
    {
    }

    PackageReport run()
    {
        checkName();
        checkConfiguration();
        checkEngine();
        if (engine && config) {
            checkInput();
            checkOutputs();
            checkWidths();
        }
        if (config) {
            checkAlphabet();
        }
        if (report.faults.isEmpty()) {
            checkRuns();
        }
        return report;
    }

private:
    void fault(const QString& sentence) { report.faults << sentence; }
    void warn(const QString& sentence) { report.warnings << sentence; }

    void checkName();
    void checkConfiguration();
    void checkEngine();
    void checkInput();
    void checkOutputs();
    void checkOutput(const BindingReport& output);
    void checkWidths();
    void checkAlphabet();
    void checkRuns();

    const DetectorConfig& detector() const { return config->detector; }
    const BindingReport& input() const { return engine->bindings.front(); }
    /// The narrowest and the widest picture that the detector will ever hand over.
    int narrowest() const { return std::min(modellimits::narrowestWidth, detector().width); }
    int widest() const { return detector().width; }

    QString enginePath;
    Result<LoadedEngine> file = failure("not read yet");
    Result<EngineReport> engine = failure("not read yet");
    std::optional<ModelConfig> config; ///< set when it holds at least a class and an input size
    PackageReport report;
};

void PackageCheck::checkName()
{
    const QString name = QFileInfo(enginePath).fileName();
    if (!isListedModelFile(name)) {
        fault(QStringLiteral("the plug-in does not list the file: its name '%1' does not fit the pattern %2")
                  .arg(name, QLatin1String(modelNamePattern)));
    }
    const std::optional<ModelFileName> pieces = splitModelFileName(enginePath);
    if (!pieces) {
        fault(QStringLiteral("the name '%1' does not split into five pieces at its underscores").arg(name));
    } else if (pieces->engineType != QLatin1String(modellimits::engineType)) {
        fault(QStringLiteral("the suffix must be '%1', not '%2'")
                  .arg(QLatin1String(modellimits::engineType), pieces->engineType));
    }
}

void PackageCheck::checkConfiguration()
{
    const std::optional<ModelFileName> pieces = splitModelFileName(enginePath);
    if (!pieces) {
        warn(QStringLiteral("which configuration file belongs to the engine follows from its name; not checked"));
        return;
    }
    if (!QFileInfo(pieces->configPath).isFile()) {
        fault(QStringLiteral("the configuration file is missing: %1").arg(pieces->configPath));
        return;
    }
    ModelConfig read;
    if (const Result<void> valid = readModelConfig(pieces->configPath, &read); !valid) {
        const QString error = textOf(valid.error());
        fault(error);
        if (read.classes.empty() && !error.startsWith(QLatin1String("Parse"))) {
            fault(QStringLiteral("the configuration names no classes"));
        }
    }
    if (read.hasClassAndInputSize()) {
        config = read;
    }
}

void PackageCheck::checkEngine()
{
    if (!QFileInfo::exists(enginePath)) {
        fault(QStringLiteral("there is no file %1").arg(enginePath));
        return;
    }
    file = LoadedEngine::read(enginePath);
    engine = file.and_then([](const LoadedEngine& loaded) { return describeEngine(loaded.network()); });
    if (!engine) {
        fault(QStringLiteral("the engine cannot be used: %1").arg(textOf(engine.error())));
    }
}

void PackageCheck::checkInput()
{
    const std::vector<std::string>& names = detector().input_layers;
    if (names.size() != 1) {
        fault(QStringLiteral("\"input_layers\" must hold exactly one name, not %1").arg(names.size()));
    } else if (QString::fromStdString(names.front()) != input().name) {
        fault(QStringLiteral("\"input_layers\" says %1, the engine's input is called '%2'")
                  .arg(quoted(names.front()), input().name));
    }
    const struct
    {
        const char* key;
        std::int64_t wanted;
        std::int64_t given;
    } sizes[] = {{"batch", input().declared[0], detector().batch},
        {"channels", input().declared[1], detector().channels}, {"height", input().declared[2], detector().height}};
    for (const auto& size : sizes) {
        if (size.wanted != size.given) {
            fault(QStringLiteral("\"%1\" is %2 in the configuration and %3 in the engine")
                      .arg(QLatin1String(size.key))
                      .arg(size.given)
                      .arg(size.wanted));
        }
    }
    if (input().declared[1] != modellimits::pictureChannels) {
        fault(QStringLiteral("the engine takes %1 channels; pictures are handed over with %2")
                  .arg(input().declared[1])
                  .arg(modellimits::pictureChannels));
    }
}

void PackageCheck::checkOutputs()
{
    const std::vector<std::string>& names = detector().output_layers;
    const std::size_t outputs = engine->bindings.size() - 1;
    if (names.size() != outputs) {
        fault(QStringLiteral("\"output_layers\" holds %1, the engine has %2")
                  .arg(countText(names.size(), "name"), countText(outputs, "output")));
    }
    for (std::size_t i = 0; i < std::min(names.size(), outputs); ++i) {
        const QString& wanted = engine->bindings[i + 1].name;
        if (QString::fromStdString(names[i]) != wanted) {
            fault(QStringLiteral("\"output_layers\" says %1 at place %2, the engine's output there is called '%3'")
                      .arg(quoted(names[i]))
                      .arg(i + 1)
                      .arg(wanted));
        }
    }
    for (std::size_t i = 0; i < outputs; ++i) {
        checkOutput(engine->bindings[i + 1]);
    }
}

void PackageCheck::checkOutput(const BindingReport& output)
{
    const Shape& shape = output.widest;
    if (shape.size() != 3 || shape[1] != 1 || output.declared[2] < 0) {
        fault(QStringLiteral("output '%1' is %2; steps x 1 x classes is needed")
                  .arg(output.name, shapeText(output.declared)));
        return;
    }
    const auto characters = static_cast<std::int64_t>(detector().alphabet.size());
    if (characters + 1 != shape[2]) {
        fault(QStringLiteral("the alphabet has %1; output '%2' has %3 classes, the blank and %4 characters")
                  .arg(countText(detector().alphabet.size(), "character"), output.name)
                  .arg(shape[2])
                  .arg(shape[2] - 1));
    }
}

void PackageCheck::checkWidths()
{
    if (narrowest() < engine->minimumWidth || widest() > engine->maximumWidth) {
        fault(QStringLiteral("pictures of %1 to %2 columns are handed over; the engine takes %3 to %4")
                  .arg(narrowest())
                  .arg(widest())
                  .arg(engine->minimumWidth)
                  .arg(engine->maximumWidth));
        return;
    }
    report.faults << outgrownBuffers(file->network(), narrowest(), widest());
}

void PackageCheck::checkAlphabet()
{
    QSet<QString> seen;
    for (const std::string& entry : detector().alphabet) {
        const QString character = QString::fromStdString(entry);
        if (seen.contains(character)) {
            // A character beyond U+FFFF is two entries, and half of one turns into a question mark.
            const char* hint = character == QLatin1String("?") ? ", or characters beyond U+FFFF" : "";
            warn(QStringLiteral("the alphabet holds '%1' more than once%2").arg(character, QLatin1String(hint)));
        }
        seen << character;
    }
}

void PackageCheck::checkRuns()
{
    for (int width : {narrowest(), widest()}) {
        const ScoreReport scores = checkScores(file->file().data(), file->file().size(), width);
        report.faults << scores.faults;
        report.warnings << scores.warnings;
    }
    report.summary = QStringLiteral("%1, widths %2 to %3, %4 at the widest")
                         .arg(countText(detector().alphabet.size(), "character"))
                         .arg(narrowest())
                         .arg(widest())
                         .arg(countText(static_cast<std::size_t>(engine->bindings[1].widest[0]), "time step"));
}

} // namespace

PackageReport checkPackage(const QString& enginePath)
{
    return PackageCheck(enginePath).run();
}

} // namespace scribo::tool
