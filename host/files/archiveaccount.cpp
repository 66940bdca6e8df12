#include "files/archiveaccount.h"

#include <QDir>
#include <QDirIterator>

#include <algorithm>

namespace scribo::host {

ArchiveAccount::ArchiveAccount(const QString& folder, const QString& removable, const QString& identity)
    : folder(folder)
    , removable(removable)
    , identity(identity)
{
    okBefore = countPictures(true);
    ngBefore = countPictures(false);
}

/// On the system disk the archive is AISavePic, on a removable disk a folder AISavePic_DATE a day; below it
/// come MODEL_IDENTITY and the verdict.
int ArchiveAccount::countPictures(bool isOk) const
{
    const QDir base(removable.isEmpty() ? folder : removable);
    const QString archives = removable.isEmpty() ? QStringLiteral("AISavePic") : QStringLiteral("AISavePic_*");
    const QDir::Filters folders = QDir::Dirs | QDir::NoDotAndDotDot;
    int count = 0;
    for (const QFileInfo& archive : base.entryInfoList({archives}, folders)) {
        const QStringList models = QDir(archive.filePath()).entryList(folders);
        for (const QString& model : models) {
            if (!model.endsWith(QLatin1Char('_') + identity)) {
                continue;
            }
            const QString verdict = QDir(archive.filePath()).filePath(model + QLatin1Char('/') + verdictText(isOk));
            QDirIterator pictures(
                verdict, {QStringLiteral("*.bmp")}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
            for (; pictures.hasNext(); pictures.next()) {
                ++count;
            }
        }
    }
    return count;
}

void ArchiveAccount::add(const RegionResult& region)
{
    if (region.archiving == Archiving::capped) {
        ++capped;
    } else if (region.archiving == Archiving::queued) {
        ++(region.isOk ? okQueued : ngQueued);
    }
}

ArchiveAccount::Outcome ArchiveAccount::finish() const
{
    Outcome outcome;
    outcome.savedOk = std::max(0, countPictures(true) - okBefore);
    outcome.savedNg = std::max(0, countPictures(false) - ngBefore);
    outcome.capped = capped;
    outcome.lost = std::max(0, okQueued - outcome.savedOk) + std::max(0, ngQueued - outcome.savedNg);
    return outcome;
}

QString ArchiveAccount::Outcome::summary() const
{
    return QStringLiteral("archive: %1 saved (%2 OK, %3 NG), %4 dropped by the cap, %5 lost")
        .arg(savedOk + savedNg)
        .arg(savedOk)
        .arg(savedNg)
        .arg(capped)
        .arg(lost);
}

} // namespace scribo::host
