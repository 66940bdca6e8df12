#include "modellist.h"

#include <QDir>

QStringList listModelFiles()
{
    return QDir(QStringLiteral("./model"))
        .entryList({QStringLiteral("ocr_*_p*_*_*.*")}, QDir::Files, QDir::Name | QDir::Reversed);
}
