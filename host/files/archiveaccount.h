#pragma once

#include "inspectionresult.h"

#include <QString>

namespace scribo::host {

/// Compares what should have been archived with what is on the disk.
///
/// The processor's writers report nothing. So the pictures in the archive's folders are counted before the first
/// inspection and after the last writer. Other programs must not change the folders meanwhile.
class ArchiveAccount
{
public:
    /// `folder`: the archive's folder on the system disk; `removable`: that on the removable disk, which, if
    /// given, gets all pictures; `identity`: whose pictures are counted. Counts what is there.
    ArchiveAccount(const QString& folder, const QString& removable, const QString& identity);

    /// Counts what should have become of a region's picture.
    void add(const RegionResult& region);

    /// Pictures that reached the disk, that the limit kept from it, and that should be there but are not.
    struct Outcome
    {
        int savedOk = 0;
        int savedNg = 0;
        int capped = 0;
        int lost = 0;

        /// One line, without a line break.
        QString summary() const;
    };

    /// Counts again. Call it when no writer is at work any more.
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
