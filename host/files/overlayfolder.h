#pragma once

#include "files/picturelist.h"
#include "result.h"

#include <QImage>
#include <QSet>
#include <QString>

namespace scribo::host {

/// A folder of pictures with their overlays: PNG files with the pictures' names. Pictures of one name from
/// different folders get "_2", "_3" and so on behind it.
class OverlayFolder
{
public:
    /// Makes the folder if it is missing. Refuses a folder that one of `pictures` lies in, since an overlay
    /// could replace its picture. The error starts with the folder.
    Result<void> open(const QString& path, const QList<PictureFile>& pictures);

    /// Writes the overlay of `picture`, replacing one of an earlier run. The error starts with the file.
    Result<void> write(const QString& picture, const QImage& overlay);

private:
    QString folder;
    QSet<QString> used;
};

} // namespace scribo::host
