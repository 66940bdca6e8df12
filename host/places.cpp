#include "places.h"

#include "resulttext.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace scribo::host {

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
    QString built = QDir::cleanPath(programFolder + QStringLiteral("/../Plugins/Processing/Scribo/libScribo.so"));
    if (QFileInfo::exists(built)) {
        return built;
    }
    return QDir::cleanPath(programFolder + QStringLiteral("/../lib/scribo/libScribo.so"));
}

Result<QString> findWorkFolder(const QString& given, const QString& programFolder)
{
    if (!given.isEmpty()) {
        const QString folder = QFileInfo(given).absoluteFilePath();
        if (hasModelFolder(folder)) {
            return folder;
        }
        return failure(given
            + (QFileInfo(folder).isDir() ? QStringLiteral(": has no folder \"model\"")
                                         : QStringLiteral(": is not a folder")));
    }
    const QStringList candidates = {
        QDir::currentPath(),
        QDir::cleanPath(programFolder + QStringLiteral("/../work")),
        QDir::cleanPath(programFolder + QStringLiteral("/../share/scribo")),
    };
    for (const QString& candidate : candidates) {
        if (hasModelFolder(candidate)) {
            return candidate;
        }
    }
    return failure(QStringLiteral("no folder \"model\" in ") + candidates.join(QStringLiteral(", "))
        + QStringLiteral(": use --work DIR"));
}

} // namespace scribo::host
