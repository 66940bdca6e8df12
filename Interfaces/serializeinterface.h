#pragma once

#include <QJsonObject>

/// What a host needs to persist an object's settings: slots 1 to 3 of the virtual table.
///
/// The order of the virtual operations in this class and in those that derive from it is the binary
/// contract between host and plug-in. Nothing may be inserted, removed or reordered.
class SerializeInterface
{
public:
    virtual ~SerializeInterface() = default;

    /// Restores the settings that an earlier saveParams() wrote; absent entries change nothing.
    virtual void loadParams(const QJsonObject& settings) = 0;

    /// Adds the current settings to `settings`, replacing an earlier entry of the same key.
    virtual void saveParams(QJsonObject& settings) = 0;
};
