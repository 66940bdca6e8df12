#include "files/settingsfile.h"

#include "files/jsonfile.h"
#include "files/outputfile.h"
#include "resulttext.h"
#include "settings.h"

namespace scribo::host {

Result<void> readSettings(const QString& path, ProcessorInterface& processor)
{
    const auto document = readJsonFile(path);
    if (!document) {
        return tl::unexpected(document.error());
    }
    const auto applied = applySettings(document->object(), processor);
    if (!applied) {
        return failure(path + QStringLiteral(": ") + textOf(applied.error()));
    }
    return {};
}

Result<void> writeSettings(const QString& path, ProcessorInterface& processor)
{
    return saveOutput(path, QJsonDocument(currentSettings(processor)).toJson());
}

} // namespace scribo::host
