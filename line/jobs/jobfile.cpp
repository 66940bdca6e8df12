#include "jobs/jobfile.h"

#include "files/jsonfile.h"
#include "files/picturereader.h"
#include "modelfilename.h"
#include "modellist.h"
#include "rules/expectedtext.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <array>
#include <cmath>

namespace scribo::line {

namespace {

const QString jobFileName = QStringLiteral("job.json");

QString sentence(const Error& error)
{
    return QString::fromStdString(error.message);
}

/// Reads the values of an object, and notes what is wrong with them.
class ObjectReader
{
public:
    /// `place` begins each fault; empty, or ends in ": ".
    ObjectReader(QJsonObject object, QString place, QStringList* faults)
        : object(std::move(object))
        , place(std::move(place))
        , faults(faults)
    {
    }

    /// Faults for the keys that were never asked for.
    ~ObjectReader()
    {
        for (const QString& key : object.keys()) {
            if (!known.contains(key)) {
                fault(QStringLiteral("\"%1\" is not known here").arg(key));
            }
        }
    }
    ObjectReader(const ObjectReader&) = delete;
    ObjectReader& operator=(const ObjectReader&) = delete;

    void fault(const QString& what) { faults->append(place + what); }

    bool has(const QString& key)
    {
        known.insert(key);
        return object.contains(key);
    }

    QJsonValue value(const QString& key)
    {
        known.insert(key);
        return object[key];
    }

    /// A text; empty when it is missing, which is a fault for a needed one.
    QString text(const QString& key, bool isNeeded)
    {
        if (!has(key) && !isNeeded) {
            return {};
        }
        const QJsonValue given = value(key);
        if (!given.isString() || given.toString().trimmed().isEmpty()) {
            fault(QStringLiteral("\"%1\" is missing or no text").arg(key));
            return {};
        }
        return given.toString();
    }

    QJsonObject objectAt(const QString& key)
    {
        if (has(key) && !value(key).isObject()) {
            fault(QStringLiteral("\"%1\" is no object").arg(key));
        }
        return value(key).toObject();
    }

    bool flag(const QString& key)
    {
        if (has(key) && !value(key).isBool()) {
            fault(QStringLiteral("\"%1\" is neither true nor false").arg(key));
        }
        return value(key).toBool();
    }

    double number(const QString& key, double otherwise)
    {
        if (has(key) && !value(key).isDouble()) {
            fault(QStringLiteral("\"%1\" is no number").arg(key));
        }
        return value(key).toDouble(otherwise);
    }

    /// A list of `N` finite numbers; nothing when it is missing or another.
    template <std::size_t N>
    std::optional<std::array<double, N>> numbers(const QString& key)
    {
        const QJsonArray list = value(key).toArray();
        std::array<double, N> result{};
        bool isRight = value(key).isArray() && list.size() == static_cast<int>(N);
        for (std::size_t i = 0; isRight && i < N; ++i) {
            result[i] = list[static_cast<int>(i)].toDouble();
            isRight = list[static_cast<int>(i)].isDouble() && std::isfinite(result[i]);
        }
        return isRight ? std::optional(result) : std::nullopt;
    }

private:
    const QJsonObject object;
    const QString place;
    QStringList* const faults;
    QSet<QString> known;
};

std::optional<host::CountRange> readCount(ObjectReader& reader)
{
    const QString key = QStringLiteral("count");
    if (!reader.has(key)) {
        return std::nullopt;
    }
    const auto ends = reader.numbers<2>(key);
    if (!ends || !host::isCountRange((*ends)[0], (*ends)[1])) {
        reader.fault(QStringLiteral("\"count\" is no list [least, most] of two whole numbers"));
        return std::nullopt;
    }
    return host::CountRange{static_cast<int>((*ends)[0]), static_cast<int>((*ends)[1])};
}

JobRegion readRegion(const QJsonValue& value, int number, const TextSettings& text, QStringList* faults)
{
    JobRegion region;
    if (!value.isObject()) {
        faults->append(QStringLiteral("region %1 is no object").arg(number));
        return region;
    }
    ObjectReader reader(value.toObject(), QStringLiteral("region %1: ").arg(number), faults);
    region.name = reader.text(QStringLiteral("name"), true);
    region.expected = reader.text(QStringLiteral("expected"), false);
    region.count = readCount(reader);
    const auto numbers = reader.numbers<4>(QStringLiteral("rect"));
    const std::optional<QRectF> rect = numbers ? host::makeRect(*numbers) : std::nullopt;
    if (rect) {
        region.rect = *rect;
    } else {
        reader.fault(QStringLiteral("\"rect\" is no list [x, y, width, height] of at least one pixel"));
    }
    if (!region.expected.isEmpty()) {
        if (const auto expected = ExpectedText::create(region.expected, text); !expected) {
            reader.fault(QStringLiteral("\"expected\": ") + sentence(expected.error()));
        }
    }
    return region;
}

QList<JobRegion> readRegions(const QJsonValue& value, const TextSettings& text, QStringList* faults)
{
    QList<JobRegion> regions;
    const QJsonArray list = value.toArray();
    if (list.isEmpty()) {
        faults->append(QStringLiteral("\"regions\" is no list of at least one region"));
    }
    QSet<QString> names;
    for (int i = 0; i < list.size(); ++i) {
        regions.append(readRegion(list[i], i + 1, text, faults));
        const QString& name = regions.last().name;
        if (!name.isEmpty() && names.contains(name)) {
            faults->append(QStringLiteral("region %1: \"%2\" is the name of another region too").arg(i + 1).arg(name));
        }
        names.insert(name);
    }
    return regions;
}

/// The settings of an alignment; the file name of its patch goes to `patchFile`.
JobAlignment readAlignment(const QJsonObject& object, QString* patchFile, QStringList* faults)
{
    JobAlignment alignment;
    AlignmentSettings& settings = alignment.settings;
    ObjectReader reader(object, QStringLiteral("alignment: "), faults);
    *patchFile = reader.text(QStringLiteral("patch"), true);
    if (const auto rect = reader.numbers<4>(QStringLiteral("rect"))) {
        const auto& [x, y, width, height] = *rect;
        settings.patch = QRectF(x, y, width, height).toRect();
    } else {
        reader.fault(QStringLiteral("\"rect\" is no list [x, y, width, height]"));
    }
    if (reader.has(QStringLiteral("shift"))) {
        if (const auto shift = reader.numbers<2>(QStringLiteral("shift"))) {
            settings.shiftX = (*shift)[0];
            settings.shiftY = (*shift)[1];
        } else {
            reader.fault(QStringLiteral("\"shift\" is no list [x, y] of pixels"));
        }
    }
    settings.turn = reader.number(QStringLiteral("turn"), settings.turn);
    settings.minimumScore = reader.number(QStringLiteral("minimumScore"), settings.minimumScore);
    return alignment;
}

int readNumber(ObjectReader& reader)
{
    constexpr double most = 65535; // a register of a PLC
    const double number = reader.number(QStringLiteral("number"), 0);
    if (number < 1 || number > most || std::floor(number) != number) {
        reader.fault(QStringLiteral("\"number\" is missing or no whole number from 1 to 65535"));
        return 0;
    }
    return static_cast<int>(number);
}

/// Files beside job.json that it names.
struct NamedFiles
{
    QString settings;
    QString patch;
};

Job parse(const QJsonObject& json, NamedFiles* files, QStringList* faults)
{
    Job job;
    ObjectReader reader(json, {}, faults);
    job.name = reader.text(QStringLiteral("name"), true);
    job.number = readNumber(reader);
    job.model = reader.text(QStringLiteral("model"), true);
    if (!job.model.isEmpty() && (!splitModelFileName(job.model) || !isListedModelFile(job.model))) {
        reader.fault(QStringLiteral("\"model\": %1 is no name of an engine file, such as ocr_printed_p1_1_v1.trt")
                         .arg(job.model));
    }
    if (const auto text = textSettings(reader.objectAt(QStringLiteral("text")))) {
        job.text = *text;
    } else {
        reader.fault(QStringLiteral("\"text\": ") + sentence(text.error()));
    }
    job.regions = readRegions(reader.value(QStringLiteral("regions")), job.text, faults);
    if (reader.has(QStringLiteral("alignment"))) {
        job.alignment = readAlignment(reader.objectAt(QStringLiteral("alignment")), &files->patch, faults);
    }
    job.source = reader.objectAt(QStringLiteral("source"));
    files->settings = reader.text(QStringLiteral("settings"), false);
    job.requiresValidation = reader.flag(QStringLiteral("requireValidation"));
    return job;
}

/// Whether a name stays in the job's folder.
bool isPlainName(const QString& name)
{
    return !name.contains(QLatin1Char('/')) && name != QStringLiteral("..") && name != QStringLiteral(".");
}

/// The hash of the job's files, each with its name and length, so that nothing can pass from one into the next.
QString hashOf(const QDir& folder, QStringList names)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    names.removeAll(QString());
    names.sort();
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        hash.addData(name.toUtf8() + '\0' + QByteArray::number(bytes.size()) + '\0');
        hash.addData(bytes);
    }
    return QString::fromLatin1(hash.result().toHex());
}

void readPatch(const QDir& folder, const QString& name, JobAlignment* alignment, QStringList* faults)
{
    const Result<cv::Mat> patch = host::readPicture(folder.filePath(name));
    if (!patch) {
        faults->append(QStringLiteral("alignment: %1: %2").arg(name, sentence(patch.error())));
    } else if (patch->channels() != 1) {
        faults->append(QStringLiteral("alignment: %1: the patch is not a grey picture").arg(name));
    } else {
        alignment->patch = *patch;
    }
}

} // namespace

tl::expected<Job, JobFaults> parseJob(const QJsonObject& json)
{
    JobFaults faults;
    NamedFiles files;
    Job job = parse(json, &files, &faults.sentences);
    if (!faults.sentences.isEmpty()) {
        return tl::unexpected(faults);
    }
    return job;
}

tl::expected<Job, JobFaults> readJob(const QString& folder)
{
    const QDir directory(folder);
    const Result<QJsonDocument> document = host::readJsonFile(directory.filePath(jobFileName));
    if (!document) {
        return tl::unexpected(JobFaults{{sentence(document.error())}});
    }
    if (!document->isObject()) {
        return tl::unexpected(JobFaults{{directory.filePath(jobFileName) + QStringLiteral(": no JSON object")}});
    }
    JobFaults faults;
    NamedFiles files;
    Job job = parse(document->object(), &files, &faults.sentences);
    job.folder = directory.absolutePath();
    for (const QString& name : {files.settings, files.patch}) {
        if (!isPlainName(name)) {
            faults.sentences.append(QStringLiteral("%1: the job's files lie in its own folder").arg(name));
            return tl::unexpected(faults);
        }
    }
    if (!files.settings.isEmpty()) {
        const Result<QJsonDocument> settings = host::readJsonFile(directory.filePath(files.settings));
        if (settings) {
            job.settings = settings->object();
        } else {
            faults.sentences.append(sentence(settings.error()));
        }
    }
    if (!files.patch.isEmpty() && job.alignment) {
        readPatch(directory, files.patch, &*job.alignment, &faults.sentences);
    }
    if (!faults.sentences.isEmpty()) {
        return tl::unexpected(faults);
    }
    job.hash = hashOf(directory, {jobFileName, files.settings, files.patch});
    return job;
}

} // namespace scribo::line
