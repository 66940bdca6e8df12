#pragma once

#include "processorinterface.h"
#include "result.h"

#include <QString>

#include <memory>

namespace scribo::host {

/// A processor plug-in, loaded into this process. It stays loaded until the process ends: processors may
/// have threads that run its code.
class ProcessorPlugin
{
public:
    /// Loads the plug-in, which looks for its models in the working directory at this moment. The error
    /// starts with the file.
    static Result<ProcessorPlugin> load(const QString& file);

    /// A working instance for `tool`, with the plug-in's default settings and no model loaded. The tool must
    /// outlive it. May be called on any thread.
    Result<std::unique_ptr<ProcessorInterface>> makeInstance(Tool* tool) const;

private:
    ProcessorPlugin(const QString& file, ProcessorInterface* root);

    QString file;
    ProcessorInterface* root; ///< the plug-in's own
};

} // namespace scribo::host
