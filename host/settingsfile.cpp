#include "settingsfile.h"

#include "jsonfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

namespace {

const QString paramsKey = QStringLiteral("paramsWrap");

QString mistakeIn(const QJsonDocument& document, int parameterCount)
{
    if (!document.isObject() || !document[paramsKey].isArray())
        return QStringLiteral("not a settings file: the array \"paramsWrap\" is missing");
    const QJsonArray values = document[paramsKey].toArray();
    if (values.size() > parameterCount)
        return QStringLiteral("settings of %1 parameters, but the processor has %2")
            .arg(values.size())
            .arg(parameterCount);
    for (int i = 0; i < values.size(); ++i)
        if (!values[i].isObject())
            return QStringLiteral("\"paramsWrap\": parameter %1 is not an object").arg(i + 1);
    return {};
}

} // namespace

bool readSettings(const QString& path, ProcessorInterface& processor, QString* error)
{
    QJsonDocument document;
    if (!readJsonFile(path, &document, error))
        return false;
    const QList<ParamWrap*>& parameters = *processor.params();
    const QString mistake = mistakeIn(document, parameters.size());
    if (!mistake.isEmpty()) {
        *error = path + QStringLiteral(": ") + mistake;
        return false;
    }
    const QJsonArray values = document[paramsKey].toArray();
    for (int i = 0; i < values.size(); ++i)
        parameters[i]->readJson(values[i].toObject());
    return true;
}

bool writeSettings(const QString& path, ProcessorInterface& processor, QString* error)
{
    QJsonObject settings;
    processor.saveParams(settings);
    const QByteArray bytes = QJsonDocument(settings).toJson();
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    *error = path + QStringLiteral(": cannot be written: ") + file.errorString();
    return false;
}
