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

/// The pictures that `arguments` name, in their order. A folder stands for its pictures sorted by name, not
/// those of folders within it; a folder without any is one entry with its fault. Relative arguments belong to
/// `base`.
QList<PictureFile> listPictures(const QStringList& arguments, const QDir& base);

} // namespace scribo::host
