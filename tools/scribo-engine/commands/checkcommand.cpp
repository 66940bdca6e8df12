#include "arguments.h"
#include "packagecheck.h"
#include "text.h"
#include "tool.h"

#include <QFileInfo>

namespace scribo::tool {

namespace {

constexpr char help[] = R"(Checks a model package as the plug-in will see it.

  scribo-engine check FOLDER/ENGINE.trt

Checks the file's name (ocr_*_p*_*_*.*, five pieces, suffix trt), the engine and the configuration
file beside it; whether sizes, layer names, widths and the alphabet fit the engine; and a run at
both ends of the widths. Prints one line for each fault. Warnings do not count as faults.

Exit code: 0 no fault, 1 faults, 2 wrong usage.
)";

} // namespace

ExitCode checkCommand(const QStringList& arguments, Streams streams)
{
    Arguments command("check", help, "FOLDER/ENGINE.trt");
    if (const auto over = command.read(arguments, streams)) {
        return *over;
    }
    const PackageReport report = checkPackage(command.file());
    const std::string name = QFileInfo(command.file()).fileName().toStdString();
    for (const QString& fault : report.faults) {
        streams.out << "fault: " << fault.toStdString() << "\n";
    }
    for (const QString& warning : report.warnings) {
        streams.out << "warning: " << warning.toStdString() << "\n";
    }
    if (!report.faults.isEmpty()) {
        streams.out << name << ": " << countText(static_cast<std::size_t>(report.faults.size()), "fault").toStdString()
                    << "\n";
        return Failure;
    }
    streams.out << name << ": no faults (" << report.summary.toStdString() << ")\n";
    return Success;
}

} // namespace scribo::tool
