#pragma once

#include <QDir>
#include <QList>
#include <QString>
#include <QStringList>

namespace scribo::host {

/// A picture to inspect.
struct PictureFile
{
    QString name; ///< as the user gave it; for a picture of a folder, the folder's name and the file's
    QString path; ///< absolute
    QString fault; ///< why there is no such picture; empty: there may be one
};

/// The pictures that `arguments` name, in their order. A folder stands for the pictures in it, sorted by name, without
/// those in its subfolders. A folder without pictures is one entry with a fault. Relative arguments start at `base`.
QList<PictureFile> listPictures(const QStringList& arguments, const QDir& base);

} // namespace scribo::host
