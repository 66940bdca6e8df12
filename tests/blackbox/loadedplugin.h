#pragma once

#include "processorinterface.h"

#include <QPluginLoader>
#include <QString>

#include <memory>

/// The built plug-in, loaded as a station loads it, in a working directory that has a model folder.
class LoadedPlugin
{
public:
    LoadedPlugin();

    /// Null when the plug-in could not be loaded; errorString() says why.
    ProcessorInterface* root() const { return processor; }
    QString errorString() const { return loader.errorString(); }

    /// A working instance for `tool` with a model of the working directory loaded and everything else at its default.
    std::unique_ptr<ProcessorInterface> makeInstance(
        Tool* tool, const QString& model = QStringLiteral("ocr_printed_p1_1_v1.trt")) const;

private:
    QPluginLoader loader;
    ProcessorInterface* processor = nullptr;
};

/// Sets the value of one parameter, by its number from 1, through its persisted form.
void setParameter(ProcessorInterface& processor, int number, const QJsonValue& value);
