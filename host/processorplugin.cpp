#include "processorplugin.h"

#include <QFileInfo>

bool ProcessorPlugin::load(const QString& file, QString* error)
{
    root = nullptr;
    if (!QFileInfo(file).isFile()) {
        *error = file + QStringLiteral(": there is no such plug-in");
        return false;
    }
    loader.setFileName(file);
    QObject* const object = loader.instance();
    if (object == nullptr) {
        *error = file + QStringLiteral(": cannot be loaded: ") + loader.errorString();
        return false;
    }
    root = qobject_cast<ProcessorInterface*>(object);
    if (root == nullptr) {
        *error = file + QStringLiteral(": is a Qt plug-in, but not a processor (")
            + QString::fromLatin1(qobject_interface_iid<ProcessorInterface*>()) + QLatin1Char(')');
        return false;
    }
    return true;
}

std::unique_ptr<ProcessorInterface> ProcessorPlugin::makeInstance(Tool* tool) const
{
    return std::unique_ptr<ProcessorInterface>(root != nullptr ? root->clone(tool, false) : nullptr);
}
