#include "modelfilename.h"

#include <QFileInfo>
#include <QStringList>

std::optional<ModelFileName> splitModelFileName(const QString& path)
{
    const QFileInfo file(path);
    const QStringList pieces = file.fileName().split('_', Qt::SkipEmptyParts);
    if (pieces.size() != 5) {
        return std::nullopt;
    }
    ModelFileName name;
    name.engineType = file.suffix();
    name.modelName = QStringList(pieces.mid(1, 3)).join('_');
    name.configPath = file.absolutePath() + '/' + pieces.first() + '_' + name.modelName + ".json";
    return name;
}
