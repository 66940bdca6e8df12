#include "places.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {

bool hasModelFolder(const QString& folder)
{
    return QFileInfo(folder + QStringLiteral("/model")).isDir();
}

} // namespace

QString findPlugin(const QString& given, const QString& programFolder)
{
    if (!given.isEmpty()) {
        return QFileInfo(given).absoluteFilePath();
    }
    const QString environment = qEnvironmentVariable("SCRIBO_PLUGIN");
    if (!environment.isEmpty()) {
        return QFileInfo(environment).absoluteFilePath();
    }
    const QString built = QDir::cleanPath(programFolder + QStringLiteral("/../Plugins/Processing/Scribo/libScribo.so"));
    if (QFileInfo::exists(built)) {
        return built;
    }
    return QDir::cleanPath(programFolder + QStringLiteral("/../lib/scribo/libScribo.so"));
}

bool findWorkFolder(const QString& given, const QString& programFolder, QString* folder, QString* error)
{
    if (!given.isEmpty()) {
        *folder = QFileInfo(given).absoluteFilePath();
        if (hasModelFolder(*folder)) {
            return true;
        }
        *error = given
            + (QFileInfo(*folder).isDir() ? QStringLiteral(": has no folder \"model\"")
                                          : QStringLiteral(": is not a folder"));
        return false;
    }
    const QStringList candidates = {
        QDir::currentPath(),
        QDir::cleanPath(programFolder + QStringLiteral("/../work")),
        QDir::cleanPath(programFolder + QStringLiteral("/../share/scribo")),
    };
    for (const QString& candidate : candidates) {
        if (hasModelFolder(candidate)) {
            *folder = candidate;
            return true;
        }
    }
    *error = QStringLiteral("no folder \"model\" in ") + candidates.join(QStringLiteral(", "))
        + QStringLiteral(": use --work DIR");
    return false;
}
