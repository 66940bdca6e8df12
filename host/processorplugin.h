#pragma once

#include "processorinterface.h"
#include "result.h"

#include <QPluginLoader>
#include <QString>

#include <memory>

/// A processor plug-in, loaded into this process. It stays loaded until the process ends: processors may
/// have threads that run its code.
class ProcessorPlugin
{
public:
    /// Loads the plug-in, which looks for its models in the working directory at this moment. The error
    /// starts with the file.
    scribo::Result<void> load(const QString& file);

    /// A working instance for `tool`, with the plug-in's default settings and no model loaded. The tool must
    /// outlive it. Null before a successful load().
    std::unique_ptr<ProcessorInterface> makeInstance(Tool* tool) const;

private:
    QPluginLoader loader;
    ProcessorInterface* root = nullptr; ///< the plug-in's own
};
