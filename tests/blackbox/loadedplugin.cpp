#include "loadedplugin.h"

#include <QDir>
#include <QJsonArray>

LoadedPlugin::LoadedPlugin()
    : loader(QStringLiteral(SCRIBO_PLUGIN_FILE))
{
    QDir::setCurrent(QStringLiteral(SCRIBO_WORK_FOLDER));
    processor = qobject_cast<ProcessorInterface*>(loader.instance());
}

std::unique_ptr<ProcessorInterface> LoadedPlugin::makeInstance(Tool* tool, const QString& model) const
{
    std::unique_ptr<ProcessorInterface> instance(processor->clone(tool, false));
    QJsonObject settings;
    instance->saveParams(settings);
    QJsonArray parameters = settings["paramsWrap"].toArray();
    QJsonObject choice = parameters[1].toObject();
    choice["selectedText"] = model;
    parameters[1] = choice;
    settings["paramsWrap"] = parameters;
    instance->loadParams(settings);
    return instance;
}

void setParameter(ProcessorInterface& processor, int number, const QJsonValue& value)
{
    ParamWrap* parameter = processor.params()->at(number - 1);
    QJsonObject state;
    parameter->writeJson(state);
    state["values"] = value;
    parameter->readJson(state);
}
