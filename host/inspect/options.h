#pragma once

#include "inspectionresult.h"
#include "result.h"
#include "taughtregion.h"

#include <QStringList>

#include <optional>

namespace scribo::host {

/// The command line of scribo-inspect. Files and folders are absolute paths, because the command changes its working
/// directory. An empty value was not given.
struct Options
{
    QStringList pictures; ///< pictures and folders, as they were given

    QList<TaughtRegion> regions;
    QString regionsFile;

    std::optional<Comparison> compare;
    std::optional<QString> reference;
    QString count; ///< "MIN:MAX"

    QString model;
    QString settings;
    QString saveSettings;
    QStringList assignments; ///< "NUMBER=VALUE"

    QString overlay;
    QStringList records;
    QString archive;
    QString removable;
    bool saveGiven = false;
    bool saveOk = false;
    bool saveNg = false;
    QString identity = QStringLiteral("C1_T1");

    QString work;
    QString plugin;
    QString log;

    bool json = false;
    bool quiet = false;
    bool verbose = false;
    bool listModels = false;
    bool listParameters = false;
    bool help = false;
    bool version = false;
};

/// Reads the command line, whose first element is the program.
Result<Options> parseOptions(const QStringList& arguments);

} // namespace scribo::host
