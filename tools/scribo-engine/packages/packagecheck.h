#pragma once

#include <QString>
#include <QStringList>

namespace scribo::tool {

/// What is to be said about a model package. Faults keep the plug-in from reading with it, or from
/// reading right; warnings do not.
struct PackageReport
{
    QStringList faults;
    QStringList warnings;
    QString summary; ///< what the package is, when it has no faults
};

/// Looks at the model package of the engine file at `enginePath` as the plug-in will: name, engine,
/// configuration file, how these fit together, and a run at both ends of the widths.
PackageReport checkPackage(const QString& enginePath);

} // namespace scribo::tool
