#include "inspect/options.h"

#include "resulttext.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace scribo::host {

namespace {

const QStringList valueOptions = {"archive", "compare", "count", "identity", "log", "model", "overlay", "plugin",
    "records", "reference", "region", "regions", "removable", "save", "save-settings", "set", "settings", "work"};
const QStringList repeatable = {"records", "region", "set"};
const QStringList flags = {"help", "json", "list-models", "list-params", "quiet", "version"};

class Reader
{
public:
    Reader()
    {
        for (const QString& name : valueOptions) {
            parser.addOption({name, {}, QStringLiteral("VALUE")});
        }
        for (const QString& name : flags) {
            parser.addOption(QCommandLineOption(name));
        }
        parser.addOption(QCommandLineOption(QStringLiteral("v")));
        parser.addOption(QCommandLineOption(QStringLiteral("h")));
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    }

    Result<Options> read(const QStringList& arguments)
    {
        if (!parser.parse(arguments)) {
            return failure(parser.errorText());
        }
        readFlags();
        if (options.help || options.version) {
            return options;
        }
        readPaths();
        return checkValues()
            .and_then([this] { return readRegions(); })
            .and_then([this] { return readJudging(); })
            .and_then([this] { return readArchive(); })
            .and_then([this] { return checkPictures(); })
            .map([this] { return options; });
    }

private:
    QString path(const char* name) const
    {
        const QString value = parser.value(QLatin1String(name));
        return value.isEmpty() ? QString() : QFileInfo(value).absoluteFilePath();
    }

    void readFlags()
    {
        options.help = parser.isSet("help") || parser.isSet("h");
        options.version = parser.isSet("version");
        options.json = parser.isSet("json");
        options.quiet = parser.isSet("quiet");
        options.verbose = parser.isSet("v");
        options.listModels = parser.isSet("list-models");
        options.listParameters = parser.isSet("list-params");
    }

    void readPaths()
    {
        options.pictures = parser.positionalArguments();
        options.regionsFile = path("regions");
        options.settings = path("settings");
        options.saveSettings = path("save-settings");
        options.overlay = path("overlay");
        for (const QString& file : parser.values("records")) {
            options.records.append(QFileInfo(file).absoluteFilePath());
        }
        options.archive = path("archive");
        options.removable = path("removable");
        options.work = path("work");
        options.plugin = path("plugin");
        options.log = path("log");
        options.model = parser.value("model");
        options.assignments = parser.values("set");
    }

    /// An option that has an empty value or is given twice is probably a mistake.
    Result<void> checkValues()
    {
        for (const QString& name : valueOptions) {
            const QStringList values = parser.values(name);
            if (values.size() > 1 && !repeatable.contains(name)) {
                return failure(QStringLiteral("--%1 is given more than once").arg(name));
            }
            if (values.contains(QString()) && name != QLatin1String("reference")) {
                return failure(QStringLiteral("--%1 needs a value").arg(name));
            }
        }
        return {};
    }

    Result<void> readRegions()
    {
        for (const QString& text : parser.values("region")) {
            const auto rect = parseRegion(text);
            if (!rect) {
                return failure(
                    QStringLiteral("--region %1: must be X,Y,WIDTH,HEIGHT in pixels, at least 1 wide and high")
                        .arg(text));
            }
            options.regions.append({*rect, {}, {}});
        }
        if (!options.regions.isEmpty() && !options.regionsFile.isEmpty()) {
            return failure(QStringLiteral("--region and --regions exclude each other"));
        }
        return {};
    }

    Result<void> readJudging()
    {
        const QString compare = parser.value("compare");
        const QStringList names = {"off", "fixed", "auto"};
        if (parser.isSet("compare")) {
            if (!names.contains(compare)) {
                return failure(QStringLiteral("--compare %1: must be off, fixed or auto").arg(compare));
            }
            options.compare = static_cast<Comparison>(names.indexOf(compare));
        }
        if (parser.isSet("reference")) {
            options.reference = parser.value("reference");
        }
        options.count = parser.value("count");
        if (parser.isSet("count") && !parseCount(options.count)) {
            return failure(QStringLiteral("--count %1: must be MIN:MAX, whole numbers from 0").arg(options.count));
        }
        return {};
    }

    Result<void> readArchive()
    {
        if (parser.isSet("identity")) {
            options.identity = parser.value("identity");
        }
        if (options.identity.contains(QLatin1Char('/'))) {
            return failure(
                QStringLiteral("--identity %1: must not contain \"/\", because it becomes part of file names")
                    .arg(options.identity));
        }
        options.saveGiven = parser.isSet("save");
        for (const QString& word : parser.value("save").split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            if (word != QLatin1String("ok") && word != QLatin1String("ng")) {
                return failure(QStringLiteral("--save %1: must be ok, ng or ok,ng").arg(parser.value("save")));
            }
            (word == QLatin1String("ok") ? options.saveOk : options.saveNg) = true;
        }
        if (options.saveGiven && options.archive.isEmpty() && options.removable.isEmpty()) {
            return failure(QStringLiteral("--save needs --archive DIR or --removable DIR"));
        }
        return {};
    }

    Result<void> checkPictures()
    {
        if (options.pictures.isEmpty() && !options.listModels && !options.listParameters) {
            return failure(QStringLiteral("no pictures given"));
        }
        // As an absolute path it would be the current folder.
        if (options.pictures.contains(QString())) {
            return failure(QStringLiteral("an empty argument is no picture or folder"));
        }
        return {};
    }

    QCommandLineParser parser;
    Options options;
};

} // namespace

Result<Options> parseOptions(const QStringList& arguments)
{
    return Reader().read(arguments);
}

} // namespace scribo::host
