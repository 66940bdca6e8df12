#include "enginemaker.h"

#include "build.h"
#include "enginerunner.h"
#include "format/enginefile.h"

namespace scribo::tool {

namespace {

bool prove(const std::vector<std::uint8_t>& engine, const builder::WidthRange& widths, QString* error)
{
    EngineRunner runner;
    if (!runner.load(engine.data(), engine.size(), error)) {
        return false;
    }
    for (int width : {widths.minimum, widths.maximum}) {
        std::vector<RunOutput> outputs;
        if (!runner.run(width, testPicture(runner.pictureSize(width)), &outputs, error)) {
            *error = QStringLiteral("a trial run at width %1 failed: %2").arg(width).arg(*error);
            return false;
        }
    }
    return true;
}

} // namespace

bool makeEngine(const FileBytes& model, const builder::BuildOptions& options, MadeEngine* made, QStringList* problems)
{
    builder::Problems found;
    made->network = builder::buildNetwork(model.data(), model.size(), options, &found);
    if (!made->network) {
        for (const std::string& problem : found) {
            *problems << QString::fromStdString(problem);
        }
        return false;
    }
    made->bytes = format::writeEngine(*made->network);
    QString error = QStringLiteral("its constants are too large for an engine file");
    if (made->bytes.empty() || !prove(made->bytes, options.widths, &error)) {
        *problems << error;
        return false;
    }
    return true;
}

} // namespace scribo::tool
