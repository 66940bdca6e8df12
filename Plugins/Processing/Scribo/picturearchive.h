#pragma once

#include "filecount.h"
#include "mounttable.h"
#include "picturequeue.h"
#include "resinfo.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <opencv2/core/mat.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class Tool;
class ToolInterface;
struct PluginSettings;

/// Keeps inspected pictures on disk, sorted by model, by camera and tool, and by verdict:
///
///     BASE/MODEL_TOOL/OK/         BASE/MODEL_TOOL/NG/ng         BASE/MODEL_TOOL/NG/ng_notype
///
/// BASE is "AISavePic/" below the tool's directory. A folder there takes no more pictures once it holds as many files
/// as the settings allow, until somebody empties it. On a removable disk BASE is "AISavePic_" and the date, and there
/// is no limit.
///
/// The inspecting thread only copies a picture; writers on Qt's global thread pool convert and save it. All operations
/// except queuePicture() and drainPendingPictures() belong to that one inspecting thread. The destructor does not wait
/// for writers: queued pictures are still written, and the destructor of QCoreApplication waits for them. A program
/// that ends with exit() instead loses the pictures that still wait.
///
/// The limit counts the files in the folder only. Pictures that still wait or are being written are not counted, so a
/// folder may end up with that many files more than its limit.
///
/// A picture that is not saved is not reported: saving must not disturb the inspection.
class PictureArchive
{
public:
    /// Tells the local time.
    using Clock = std::function<QDateTime()>;
    using ImageConverter = PictureQueue::ImageConverter;

    /// `settings` supplies switches and limits and receives the counts and the shown location; it must outlive
    /// the archive. `converter` must outlive the writers.
    PictureArchive(
        PluginSettings& settings, ImageConverter converter, MountTable mountTable = MountTable(),
        Clock clock = [] { return QDateTime::currentDateTime(); });
    PictureArchive(const PictureArchive&) = delete;
    PictureArchive& operator=(const PictureArchive&) = delete;

    /// Puts the mount point of the first removable disk, or "系统盘" (system disk), into the settings' savePathText.
    void refreshSaveLocation();

    /// The mount points of the removable disks, see MountTable.
    QStringList findRemovableMounts();

    /// The folder for the picture of `record`, created if it is missing, whatever the switches say. Puts the
    /// number of files in it into the settings.
    /// Empty when the picture is not to be saved: no model, no base folder, switched off, or the limit is reached.
    QString pictureFolder(
        ToolInterface* tool, const QString& modelName, const SOrgAI_ResInfo& record, const QString& toolId);

    /// Queues a deep copy of `image` (8 bits, 1, 3 or 4 channels) to be written to `path`, unless the tool
    /// forbids saving. Red and blue of a three-channel picture change places. A picture that waits under the same
    /// path is replaced. Thread-safe as far as the tool is.
    void queuePicture(ToolInterface* tool, const cv::Mat& image, const QString& path);

    /// Writes waiting pictures on the calling thread until none is left. Thread-safe.
    void drainPendingPictures();

    /// Saves the picture of one result record; `number` counts the records of the inspection from 1. The name says
    /// tool, number, time and text: C1_T1ROI1_1121_142233_718_LOT4827.bmp.
    ///
    /// While the station's clock goes forward, no two pictures of one archive get the same name: where several fall
    /// into one millisecond, the later ones get the times of the following milliseconds. When the clock shows a time
    /// twice, as at the end of summer time, a later picture may get the name of an earlier one and replace it.
    void savePicture(
        Tool* tool, const QString& modelName, const SOrgAI_ResInfo& record, int number, const cv::Mat& image);

    /// Creates the folders of a model with these classes and brings the counts up to date.
    void prepareFolders(ToolInterface* tool, const QString& modelName, const std::vector<std::string>& classNames);

private:
    QDateTime stampFor(int number);
    QString folderAt(const QDateTime& now, ToolInterface* tool, const QString& modelName, const SOrgAI_ResInfo& record,
        const QString& toolId);

    PluginSettings& settings;
    MountTable mountTable;
    Clock clock;
    PacedFileCount removableCount;
    QDateTime lastReading; ///< of the clock
    QDateTime lastStamp; ///< with lastNumber, the greatest yet given to a picture
    int lastNumber = 0;
    std::shared_ptr<PictureQueue> queue;
};
