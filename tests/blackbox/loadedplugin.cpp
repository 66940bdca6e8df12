#include "loadedplugin.h"

#include <QDir>
#include <QJsonArray>

LoadedPlugin::LoadedPlugin()
    : loader(QStringLiteral(SCRIBO_PLUGIN_FILE))
{
    QDir::setCurrent(QStringLiteral(SCRIBO_WORK_FOLDER));
    processor = qobject_cast<ProcessorInterface*>(loader.instance());
}

std::unique_ptr<ProcessorInterface> LoadedPlugin::makeInstance(Tool* tool) const
{
    std::unique_ptr<ProcessorInterface> instance(processor->clone(tool, false));
    QJsonObject settings;
    instance->saveParams(settings);
    QJsonArray parameters = settings["paramsWrap"].toArray();
    QJsonObject model = parameters[1].toObject();
    model["selectedText"] = "ocr_printed_p1_1_v1.trt";
    parameters[1] = model;
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
