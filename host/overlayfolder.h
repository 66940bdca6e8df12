#pragma once

#include "picturelist.h"

#include <QImage>
#include <QSet>
#include <QString>

/// A folder of pictures with their overlays: PNG files with the pictures' names. Pictures of one name from
/// different folders get "_2", "_3" and so on behind it.
class OverlayFolder
{
public:
    /// Makes the folder if it is missing. Refuses a folder that one of `pictures` lies in, since an overlay
    /// could replace its picture. Returns false with the folder and the reason in `error`.
    bool open(const QString& path, const QList<PictureFile>& pictures, QString* error);

    /// Writes the overlay of `picture`, replacing one of an earlier run. Returns false with the file and the
    /// reason in `error`.
    bool write(const QString& picture, const QImage& overlay, QString* error);

private:
    QString folder;
    QSet<QString> used;
};
