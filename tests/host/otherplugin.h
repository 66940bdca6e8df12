#pragma once

#include <QObject>

/// A Qt plug-in that is no processor.
class OtherPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "test.other")
};
