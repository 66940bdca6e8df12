#include "processorplugin.h"

#include "resulttext.h"

#include <QFileInfo>

scribo::Result<void> ProcessorPlugin::load(const QString& file)
{
    root = nullptr;
    if (!QFileInfo(file).isFile()) {
        return scribo::failure(file + QStringLiteral(": there is no such plug-in"));
    }
    loader.setFileName(file);
    QObject* const object = loader.instance();
    if (object == nullptr) {
        return scribo::failure(file + QStringLiteral(": cannot be loaded: ") + loader.errorString());
    }
    root = qobject_cast<ProcessorInterface*>(object);
    if (root == nullptr) {
        return scribo::failure(file + QStringLiteral(": is a Qt plug-in, but not a processor (")
            + QString::fromLatin1(qobject_interface_iid<ProcessorInterface*>()) + QLatin1Char(')'));
    }
    return {};
}

std::unique_ptr<ProcessorInterface> ProcessorPlugin::makeInstance(Tool* tool) const
{
    return std::unique_ptr<ProcessorInterface>(root != nullptr ? root->clone(tool, false) : nullptr);
}
