#include "processorplugin.h"

#include "resulttext.h"

#include <QFileInfo>
#include <QPluginLoader>

#include <mutex>

namespace scribo::host {

namespace {

/// Held while an instance is made: the plug-in's own must not be called by two threads at a time.
std::mutex making;

} // namespace

ProcessorPlugin::ProcessorPlugin(const QString& file, ProcessorInterface* root)
    : file(file)
    , root(root)
{
}

Result<ProcessorPlugin> ProcessorPlugin::load(const QString& file)
{
    if (!QFileInfo(file).isFile()) {
        return failure(file + QStringLiteral(": there is no such plug-in"));
    }
    QPluginLoader loader(file); // its destructor does not unload the plug-in
    QObject* const object = loader.instance();
    if (object == nullptr) {
        return failure(file + QStringLiteral(": cannot be loaded: ") + loader.errorString());
    }
    auto* const root = qobject_cast<ProcessorInterface*>(object);
    if (root == nullptr) {
        return failure(file + QStringLiteral(": is a Qt plug-in, but not a processor (")
            + QString::fromLatin1(qobject_interface_iid<ProcessorInterface*>()) + QLatin1Char(')'));
    }
    return ProcessorPlugin(file, root);
}

Result<std::unique_ptr<ProcessorInterface>> ProcessorPlugin::makeInstance(Tool* tool) const
{
    const std::lock_guard lock(making);
    std::unique_ptr<ProcessorInterface> instance(root->clone(tool, false));
    if (instance == nullptr) {
        return failure(file + QStringLiteral(": makes no instance"));
    }
    return instance;
}

} // namespace scribo::host
