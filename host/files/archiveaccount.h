#pragma once

#include "inspectionresult.h"

#include <QString>

namespace scribo::host {

/// Holds what should have been archived against what is on the disk.
///
/// The processor's writers report nothing, so the pictures are counted in the archive's folders before the
/// first inspection and after the last writer. Other programs must leave the folders alone meanwhile.
class ArchiveAccount
{
public:
    /// `folder`: the archive's folder on the system disk; `removable`: the removable disk's, which then holds
    /// all pictures; `identity`: whose pictures are counted. Counts what is there.
    ArchiveAccount(const QString& folder, const QString& removable, const QString& identity);

    /// Notes what should have become of an item's picture.
    void add(const RegionResult& region);

    /// Pictures that reached the disk, that the cap kept from it, and that should be there and are not.
    struct Outcome
    {
        int savedOk = 0;
        int savedNg = 0;
        int capped = 0;
        int lost = 0;

        /// One line, without a line break.
        QString summary() const;
    };

    /// Counts again. To be called once no writer is at work any more.
    Outcome finish() const;

private:
    int countPictures(bool isOk) const;

    QString folder;
    QString removable;
    QString identity;
    int okBefore = 0;
    int ngBefore = 0;
    int okQueued = 0;
    int ngQueued = 0;
    int capped = 0;
};

} // namespace scribo::host
