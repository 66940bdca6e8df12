#pragma once

#include "pluginsettings.h"

#include <QJsonArray>
#include <QList>

class ParamWrap;

/// The parameters that the host shows and persists, over the values in PluginSettings.
///
/// The order is the persisted format: values are restored by position. Owns the parameter objects and
/// their texts; the settings must outlive it.
class ParameterSet
{
public:
    explicit ParameterSet(PluginSettings& settings);
    ~ParameterSet();
    ParameterSet(const ParameterSet&) = delete;
    ParameterSet& operator=(const ParameterSet&) = delete;

    /// The host's view of the list. The host does not change which objects are in it.
    QList<ParamWrap*>* list() { return &parameters; }

    /// One object for each parameter, in order.
    QJsonArray toJson() const;
    /// Restores as many parameters as `array` has elements; an element that is no object changes nothing.
    void fromJson(const QJsonArray& array);

private:
    void addModelParameters();
    void addArchiveParameters();
    void addJudgementParameters();

    PluginSettings& settings;
    QString modelLabel;
    QString modelTip;
    QString modelEnableNames[2];
    QString modelEnableTips[2];
    QString saveSwitchNames[2];
    QString saveSwitchTips[2];
    QString compareModeNames[3];
    QString compareModeTips[3];
    QList<ParamWrap*> parameters;
};
