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
/// BASE is "AISavePic/" below the tool's directory, where a folder takes no more pictures once it holds as many
/// files as the settings allow, until somebody empties it; or "AISavePic_" and the date on a removable disk,
/// without a cap.
///
/// The inspecting thread only copies a picture; writers on Qt's global thread pool convert and save it. All
/// operations but queuePicture() and drainPendingPictures() belong to that one inspecting thread. Destroying the
/// archive waits for nothing: pictures that were queued are still written, and the destruction of QCoreApplication
/// waits for them. A program that ends by exit() instead loses what still waits.
///
/// The cap looks at the files in the folder alone. Pictures that are still queued are not among them, so a
/// folder can come to hold as many more than its limit as may be queued or in a writer's hands just then.
///
/// Nothing is reported when a picture is not saved: saving never stands in the way of the inspection.
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
    /// Empty when the picture is not to be saved: no model, no base folder, switched off, or the cap reached.
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
    /// Inspections of one archive never give two pictures the same name while the station's clock goes on: where
    /// several fall into one millisecond, the later ones are named after the milliseconds that follow. A time that the
    /// clock shows again, as when summer time ends, can name a later picture like an earlier one, which it then
    /// replaces.
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
