#include "modelconfig.h"

#include "resulttext.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using scribo::failure;
using scribo::Result;

namespace {

constexpr qint64 mostBytes = 64 << 20; ///< far more than any real one has

/// A pipe would be waited for without end, and a damaged file of any size would be read whole.
bool canBeConfiguration(const QString& path)
{
    const QFileInfo file(path);
    return file.isFile() && file.size() <= mostBytes;
}

std::vector<ClassInfo> readClasses(const QJsonArray& entries)
{
    std::vector<ClassInfo> classes;
    for (const QJsonValue& entry : entries) {
        const QJsonObject object = entry.toObject();
        classes.push_back(
            {object["name"].toString().toStdString(), object["as_ok"].toBool(), object["ok_num"].toInt()});
    }
    return classes;
}

/// One entry per UTF-16 code unit: the training side counts characters that way, and the position is
/// the class number.
std::vector<std::string> readAlphabet(const QString& characters)
{
    std::vector<std::string> alphabet;
    for (const QChar character : characters) {
        alphabet.push_back(QString(character).toStdString());
    }
    return alphabet;
}

std::vector<std::string> readNames(const QJsonArray& entries)
{
    std::vector<std::string> names;
    for (const QJsonValue& entry : entries) {
        names.push_back(entry.toString().toStdString());
    }
    return names;
}

void readInputDims(const QJsonObject& dims, DetectorConfig* detector)
{
    detector->width = dims["width"].toInt(0);
    detector->height = dims["height"].toInt(0);
    detector->channels = dims["channels"].toInt(3);
    detector->batch = dims["batch"].toInt(1);
}

void readAnchors(const QJsonObject& anchors, DetectorConfig* detector)
{
    for (const QJsonValue& entry : anchors["boxes"].toArray()) {
        const QJsonObject box = entry.toObject();
        detector->anchors.emplace_back(box["width"].toInt(), box["height"].toInt());
    }
    for (const QJsonValue& entry : anchors["mask"].toArray()) {
        std::vector<std::int32_t> indices;
        for (const QJsonValue& index : entry.toArray()) {
            indices.push_back(index.toInt());
        }
        detector->mask.push_back(std::move(indices));
    }
}

Result<void> validate(const ModelConfig& config)
{
    if (!config.hasClassAndInputSize()) {
        return failure("Invalid config: there should be at least 1 class, or input size greater than 0.");
    }
    if (!config.detector.mask.empty() && config.detector.mask.size() != config.detector.output_layers.size()) {
        return failure("Incompatible size of output layers and anchors mask");
    }
    return {};
}

} // namespace

bool ModelConfig::hasClassAndInputSize() const
{
    return !classes.empty() && detector.width >= 1 && detector.height >= 1;
}

Result<void> parseModelConfig(const QByteArray& bytes, const QString& path, ModelConfig* config)
{
    // By way of QString, which drops a byte-order mark and replaces what is not UTF-8; of all bytes, for
    // fromUtf8(QByteArray) takes a zero for the end.
    QJsonParseError parseError;
    const QJsonDocument document
        = QJsonDocument::fromJson(QString::fromUtf8(bytes.constData(), bytes.size()).toUtf8(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        return failure("Parse config file " + path + " failed: " + parseError.errorString());
    }
    const QJsonObject root = document.object();
    DetectorConfig& detector = config->detector;

    config->classes = readClasses(root["classes"].toArray());
    detector.classNum = static_cast<std::int32_t>(config->classes.size());
    config->ignoreChar = root["ignore_char"].toString();
    detector.alphabet = readAlphabet(root["alphabet"].toString());

    const QJsonObject inferInfo = root["model_infer_info"].toObject();
    readInputDims(inferInfo["input_dims"].toObject(), &detector);
    detector.letter_box = inferInfo["letter_box"].toBool();
    detector.input_layers = readNames(inferInfo["input_layers"].toArray());
    detector.output_layers = readNames(inferInfo["output_layers"].toArray());
    readAnchors(inferInfo["anchors"].toObject(), &detector);
    return validate(*config);
}

Result<void> readModelConfig(const QString& path, ModelConfig* config)
{
    QFile file(path);
    if (!canBeConfiguration(path) || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return failure("Can not open config file: " + path);
    }
    return parseModelConfig(file.readAll(), path, config);
}
