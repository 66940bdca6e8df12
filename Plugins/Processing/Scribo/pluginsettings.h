#pragma once

#include <QString>
#include <QStringList>

/// The values behind the plug-in's parameters, and the counters that go with them.
///
/// Plain members, because two sides use the same storage: the host's editors, through the parameter
/// objects that point here, and the inspection and the picture archive, which read and write them.
struct PluginSettings
{
    // Model
    QStringList modelFiles; ///< engine files in ./model, see listModelFiles(); the entries of the drop-down
    QStringList modelFileTexts; ///< what the drop-down shows for them: the same
    QString selectedModel;
    bool modelEnable[2] = {true, false}; ///< enabled, disabled
    bool isModelDisabled() const { return modelEnable[1] && !modelEnable[0]; }

    // Picture archive
    bool saveSwitch[2] = {false, false}; ///< save OK pictures, save NG pictures
    int okSavedCount = 0;
    int okSaveLimit = 1000;
    int okSaveLow = 0; ///< shown and kept by the host's editor; the archive does not use it
    int ngSavedCount = 0;
    int ngSaveLimit = 1000;
    int ngSaveLow = 0; ///< as okSaveLow
    int saveRangeMin = 0; ///< this and the next two: what the host's editor accepts
    int saveRangeMax = 9999;
    int saveRangeStep = 1;
    QString savePathText;

    // Judgement
    bool compareMode[3] = {true, false, false}; ///< off, fixed reference, automatic reference
    QString referenceText;
    int autoUpdateHits = 0;
    int autoUpdateNeeded = 5;
    int charCountLow = 0;
    int charCountHigh = 99999;
    int charRangeMin = 0; ///< this and the next two: what the host's editor accepts
    int charRangeMax = 99999;
    int charRangeStep = 1;

    // The last line judged, shown by the host
    QString recognisedText;
    int charCount = 0;
};
