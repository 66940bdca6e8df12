#include "picturearchive.h"

#include "pluginsettings.h"
#include "tool.h"

#include <QCalendar>
#include <QDir>
#include <QLocale>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

#include <opencv2/imgproc.hpp>

#include <utility>

namespace {

/// A clock that steps back by this many milliseconds was set back; by less, it was corrected.
constexpr qint64 clockSetBack = 1000;

/// Null for an object that is not a Tool: it has no directory, and no picture is saved for it.
Tool* asTool(ToolInterface* tool)
{
    return dynamic_cast<Tool*>(tool);
}

/// A time in the digits 0 to 9. QDateTime::toString() takes those of the system's language.
QString written(const QDateTime& time, const QString& format)
{
    return QLocale::c().toString(time, format);
}

/// The folder that holds the models' folders. There is no limit on a removable disk.
struct Base
{
    QString path;
    bool removable;
};

Base baseOf(ToolInterface* tool, const QDateTime& now)
{
    const QString disk = tool->removableDiskPath();
    if (!disk.isEmpty()) {
        return {
            disk + QStringLiteral("/AISavePic_") + written(now, QStringLiteral("yyyyMMdd")) + QLatin1Char('/'), true};
    }
    Tool* const systemTool = asTool(tool);
    return {systemTool ? systemTool->toolDirectory() + QStringLiteral("AISavePic/") : QString(), false};
}

QString verdictFolder(const SOrgAI_ResInfo& record)
{
    if (record.isOk) {
        return QStringLiteral("OK/");
    }
    return record.classIndex == -1 ? QStringLiteral("NG/ng_notype") : QStringLiteral("NG/ng");
}

SOrgAI_ResInfo folderRecord(const std::string& text, int classIndex, bool isOk)
{
    SOrgAI_ResInfo record;
    record.score = -1.0;
    record.classIndex = classIndex;
    record.text = text;
    record.isOk = isOk;
    return record;
}

} // namespace

PictureArchive::PictureArchive(PluginSettings& settings, ImageConverter converter, MountTable mountTable, Clock clock)
    : settings(settings)
    , mountTable(std::move(mountTable))
    , clock(std::move(clock))
    , queue(std::make_shared<PictureQueue>(converter))
{
    // Qt prepares its calendar on first use. Threads that format their first dates at the same time may get empty
    // texts, and pictures without a time in their names would replace each other.
    static const QCalendar prepared;
}

void PictureArchive::refreshSaveLocation()
{
    const QStringList mounts = findRemovableMounts();
    settings.savePathText = mounts.isEmpty() ? QStringLiteral("系统盘") : mounts.first();
}

QStringList PictureArchive::findRemovableMounts()
{
    return mountTable.findRemovableMounts();
}

QString PictureArchive::pictureFolder(
    ToolInterface* tool, const QString& modelName, const SOrgAI_ResInfo& record, const QString& toolId)
{
    return folderAt(clock(), tool, modelName, record, toolId);
}

QString PictureArchive::folderAt(const QDateTime& now, ToolInterface* tool, const QString& modelName,
    const SOrgAI_ResInfo& record, const QString& toolId)
{
    if (!tool || modelName.isEmpty()) {
        return {};
    }
    const Base base = baseOf(tool, now);
    if (base.path.isEmpty()) {
        return {};
    }

    QString folder = base.path + modelName + QLatin1Char('_') + toolId + QLatin1Char('/') + verdictFolder(record);
    QDir().mkpath(folder);

    if (!settings.saveSwitch[record.isOk ? 0 : 1]) {
        return {};
    }
    int& count = record.isOk ? settings.okSavedCount : settings.ngSavedCount;
    const int limit = record.isOk ? settings.okSaveLimit : settings.ngSaveLimit;
    if (base.removable) {
        count = removableCount(folder);
        return folder;
    }
    count = countFiles(folder);
    return count < limit ? folder : QString();
}

void PictureArchive::queuePicture(ToolInterface* tool, const cv::Mat& image, const QString& path)
{
    Tool* const savingTool = asTool(tool);
    if (!savingTool || !savingTool->savingAllowed() || image.empty()) {
        return;
    }

    cv::Mat copy;
    try {
        if (image.channels() == 3) {
            cv::cvtColor(image, copy, cv::COLOR_BGR2RGB);
        } else {
            image.copyTo(copy);
        }
    } catch (const cv::Exception&) {
        return; // of a depth that could not be written either, or out of memory: no reason to fail the inspection
    }
    queue->add(path, copy);
    QtConcurrent::run(QThreadPool::globalInstance(), [writers = queue] { writers->drain(); });
}

void PictureArchive::drainPendingPictures()
{
    queue->drain();
}

/// The time in the name of picture `number`. Time and number together grow with every picture, so a name is unique as
/// long as the station's clock does not show the same time twice.
QDateTime PictureArchive::stampFor(int number)
{
    QDateTime stamp = clock();
    const bool isSetBack = lastReading.isValid() && stamp.msecsTo(lastReading) >= clockSetBack;
    lastReading = stamp;
    if (lastStamp.isValid() && !isSetBack) { // a clock that was set back is taken at its word
        stamp = std::max(stamp, number > lastNumber ? lastStamp : lastStamp.addMSecs(1));
    }
    lastStamp = stamp;
    lastNumber = number;
    return stamp;
}

void PictureArchive::savePicture(
    Tool* tool, const QString& modelName, const SOrgAI_ResInfo& record, int number, const cv::Mat& image)
{
    if (!tool) {
        return;
    }
    // One time for both, so that at midnight name and folder agree on the day.
    const QDateTime now = stampFor(number);
    const QString toolId = tool->toolIdentity();
    const QString folder = folderAt(now, tool, modelName, record, toolId);
    if (folder.isEmpty()) {
        return;
    }
    const QString name = toolId + QStringLiteral("ROI") + QString::number(number) + QLatin1Char('_')
        + written(now, QStringLiteral("MMdd_HHmmss_zzz")) + QLatin1Char('_') + QString::fromStdString(record.text)
        + QStringLiteral(".bmp");
    queuePicture(tool, image, folder + QLatin1Char('/') + name);
}

void PictureArchive::prepareFolders(
    ToolInterface* tool, const QString& modelName, const std::vector<std::string>& classNames)
{
    Tool* const identified = asTool(tool);
    if (!identified) {
        return;
    }
    const QString toolId = identified->toolIdentity();
    int classIndex = 0;
    for (const std::string& className : classNames) {
        pictureFolder(tool, modelName, folderRecord(className, classIndex++, false), toolId);
    }
    pictureFolder(tool, modelName, folderRecord("ng_notype", -1, false), toolId);
    pictureFolder(tool, modelName, folderRecord("ok", 0, true), toolId);
}
