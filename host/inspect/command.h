#pragma once

#include "archiveaccount.h"
#include "filetool.h"
#include "hostlog.h"
#include "inspector.h"
#include "options.h"
#include "overlayfolder.h"
#include "picturelist.h"
#include "processorplugin.h"
#include "progressbar.h"
#include "recordfile.h"
#include "regionplan.h"
#include "resulttable.h"

#include <QSet>

#include <memory>
#include <vector>

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
    PictureResult inspectPicture(const PictureFile& picture);
    void report(const PictureResult& result);
    void reportUnread(const PictureResult& result);
    void finishArchive();
    void finish();

    /// Reports a fault, which makes the exit code. Returns false.
    bool fault(const QString& message);
    bool fault(const scribo::Error& error);
    /// Whether it succeeded; an error is reported as a fault, behind `option`.
    bool succeeded(const scribo::Result<void>& result, const char* option = "");
    void print(const QByteArray& text);

    Options options;
    HostLog& log;
    QList<PictureFile> pictures;
    RegionPlan plan;
    QString workFolder;
    ProcessorPlugin plugin;
    FileTool tool;
    std::unique_ptr<ProcessorInterface> processor; // made for `tool`, so it goes first
    std::unique_ptr<Inspector> inspector;
    OverlayFolder overlays;
    std::vector<std::unique_ptr<RecordFile>> records;
    std::unique_ptr<ArchiveAccount> archive;
    std::unique_ptr<ProgressBar> progress;
    std::unique_ptr<ResultTable> table;
    Totals totals;
    QSet<QString> reported; ///< messages that are not repeated with every picture
    bool hadFault = false;
};
