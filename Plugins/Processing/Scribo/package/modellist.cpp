#include "modellist.h"

#include <QDir>

namespace {

QStringList listedNames()
{
    return {QString::fromLatin1(modelNamePattern)};
}

} // namespace

bool isListedModelFile(const QString& fileName)
{
    return QDir::match(listedNames(), fileName);
}

QStringList listModelFiles()
{
    return QDir(QStringLiteral("./model")).entryList(listedNames(), QDir::Files, QDir::Name | QDir::Reversed);
}
