#pragma once

#include "files/archiveaccount.h"
#include "files/hostlog.h"
#include "files/overlayfolder.h"
#include "files/picturelist.h"
#include "files/recordfile.h"
#include "files/regionplan.h"
#include "inspect/options.h"
#include "inspector.h"
#include "terminal/progressbar.h"
#include "terminal/resulttable.h"

#include <QSet>

#include <memory>
#include <vector>

namespace scribo::host {

/// What scribo-inspect returns to the shell.
namespace ExitCode {
constexpr int allOk = 0;
constexpr int someNg = 1;
constexpr int fault = 2;
} // namespace ExitCode

/// One run of scribo-inspect. Results go to standard output, everything else to standard error.
class Command
{
public:
    /// `log` must outlive the command: the processor's threads may write to it at any time.
    Command(const Options& options, HostLog& log);

    /// Returns the exit code.
    int run();

private:
    // Before the first picture: false after a fault, which was reported.
    bool openLog();
    bool readPlan();
    bool loadProcessor();
    bool applyOptions();
    bool applyComparison();
    bool chooseModel();
    bool checkComparison();
    bool openOutputs();
    bool openArchive();

    void listModels();
    void listParameters();

    void inspectAll();
    Result<InspectionResult> inspectPicture(const PictureFile& picture);
    void report(const PictureResult& result);
    void reportUnread(const QString& picture, const InspectionResult& result);
    void write(const QString& picture, const InspectionResult& result);
    void finishArchive();
    void finish();

    /// Reports a fault, which makes the exit code. Returns false.
    bool fault(const QString& message);
    bool fault(const Error& error);
    /// Whether it succeeded; an error is reported as a fault, behind `option`.
    bool succeeded(const Result<void>& result, const char* option = "");
    void print(const QByteArray& text);

    Options options;
    HostLog& log;
    QList<PictureFile> pictures;
    RegionPlan plan;
    QString workFolder;
    std::unique_ptr<Inspector> inspector;
    ProcessorInterface* processor = nullptr; ///< the inspector's
    OverlayFolder overlays;
    std::vector<std::unique_ptr<RecordFile>> records;
    std::unique_ptr<ArchiveAccount> archive;
    std::unique_ptr<ProgressBar> progress;
    std::unique_ptr<ResultTable> table;
    Totals totals;
    QSet<QString> reported; ///< messages that are not repeated with every picture
    bool hadFault = false;
};

} // namespace scribo::host
