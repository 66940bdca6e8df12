#pragma once

#include "serializeinterface.h"

#include <QPixmap>
#include <QString>

/// How a plug-in presents itself to the host: slots 4 to 8 of the virtual table.
class PluginInterface : public SerializeInterface
{
public:
    /// The unique identity, equal to the IID in the plug-in's metadata.
    virtual QString pluginId() = 0;
    /// The short name that the host's lists show.
    virtual QString displayName() = 0;
    virtual QString version() = 0;
    virtual QString description() = 0;
    /// The picture that the host shows beside the name; a null one without a running QGuiApplication.
    virtual QPixmap titleImage() = 0;
};
