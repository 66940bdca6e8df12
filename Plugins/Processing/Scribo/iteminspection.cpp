#include "iteminspection.h"

#include "exceptiontext.h"
#include "linejudge.h"
#include "ocranalyser.h"
#include "picturearchive.h"
#include "pluginsettings.h"
#include "posecorrection.h"
#include "regioncutter.h"
#include "tool.h"

#include <QCoreApplication>
#include <QDebug>

#include <utility>

namespace {

/// The upstream tool whose pose the regions follow: syringe segmentation.
const QString poseTool = QStringLiteral("注射器分割");

/// In the translation context of the plug-in class.
QString unknownError()
{
    return QCoreApplication::translate("Scribo", "unknown error!");
}

/// The line of a region whose text could not be read.
SOrgAI_ResInfo messageLine(const QString& message, const cv::Rect& box)
{
    SOrgAI_ResInfo line;
    line.score = -1.0;
    line.classIndex = -1;
    line.text = message.toStdString();
    line.rect = box;
    return line;
}

} // namespace

InspectedItem InspectedItem::failed()
{
    InspectedItem item;
    item.isOk = false;
    item.lines.append(messageLine(unknownError(), cv::Rect()));
    return item;
}

ItemInspection::ItemInspection(
    const Equipment& equipment, Tool& tool, int index, cv::Mat picture, const cv::Size& pictureSize)
    : equipment(equipment)
    , tool(tool)
    , index(index)
    , picture(std::move(picture))
    , pictureSize(pictureSize)
{
}

InspectedItem ItemInspection::inspect(const QList<QRectF>& regions)
{
    bool hasInspected = false;
    for (const QRectF& region : regions) {
        if (!isInspected(region)) {
            continue;
        }
        hasInspected = true;
        if (const auto cut = cutRegion(region, pictureSize)) {
            inspectRegion(*cut);
        } else {
            missRegion(region);
        }
    }
    if (!hasInspected) {
        qWarning() << "Nothing of item" << index << "was inspected: all its regions are below one pixel";
        if (picture.empty() && !equipment.settings.isModelDisabled()) {
            // Without a picture an item of which nothing was inspected would pass.
            qWarning() << "Item" << index << "has no picture";
            return InspectedItem::failed();
        }
    }
    return std::move(item);
}

/// The picture of one region; empty when the part's pose is of no use.
cv::Mat ItemInspection::regionImage(const cv::Rect& region) const
{
    PosePair pose;
    if (tool.upstreamPose(poseTool, index, &pose)) {
        if (!isFinite(pose)) {
            // Nobody knows where the part is. What lies upright in the region may be anything.
            qWarning() << "The pose of item" << index << "is not finite";
            return {};
        }
        if (const auto corrected = correctedRegion(picture, pose, region)) {
            return *corrected;
        }
    }
    return picture(region);
}

/// A region that is taught but does not lie in the picture: the item must not pass unread.
void ItemInspection::missRegion(const QRectF& region)
{
    if (equipment.settings.isModelDisabled()) {
        return;
    }
    qWarning() << region << "of item" << index << "is not in its picture";
    failRegion(wholePixels(region));
    ++recordCount;
}

void ItemInspection::inspectRegion(const RegionCut& region)
{
    const int firstLine = item.lines.size();
    cv::Mat image;
    try {
        image = regionImage(region.pixels);
        if (!equipment.settings.isModelDisabled()) {
            readRegion(image, region);
        }
    } catch (...) {
        qWarning() << "Reading a region of item" << index << "failed:" << exceptionText();
        if (!equipment.settings.isModelDisabled()) {
            failRegion(region.pixels);
        }
    }
    archiveRegion(image, firstLine);
}

/// Reads and judges one region.
void ItemInspection::readRegion(const cv::Mat& image, const RegionCut& region)
{
    if (image.empty() || !hasLoadedModel()) {
        failRegion(region.pixels);
        return;
    }
    item.isRead = true;
    std::vector<SOrgAI_ResInfo> lines;
    if (equipment.analyser->execute(image, lines) != 1) {
        failRegion(region.pixels);
        return;
    }
    item.isOk = judgeLines(lines, region.inside) && item.isOk;
}

bool ItemInspection::judgeLines(const std::vector<SOrgAI_ResInfo>& lines, const QRectF& region)
{
    const OCRAnalyser& analyser = *equipment.analyser;
    QStringList groups;
    for (const ClassInfo& info : analyser.classes()) {
        groups.append(QString::fromStdString(info.name));
    }
    return LineJudge(equipment.settings, groups, analyser.ignoreChar())
        .judge(lines, region, &item.lines, &item.mismatches);
}

/// Adds the line of a region that could not be read. The verdict first, where nothing can fail before it.
void ItemInspection::failRegion(const cv::Rect& box)
{
    item.isOk = false;
    item.lines.append(messageLine(faultMessage(), box));
}

/// Why a region could not be read. Without a model that is the reason, even when something else is wrong, too.
QString ItemInspection::faultMessage() const
{
    if (!equipment.analyser) {
        return QStringLiteral("模型文件加载出错") + equipment.loadFault;
    }
    return hasLoadedModel() ? unknownError() : equipment.analyser->errorMessage() + equipment.loadFault;
}

bool ItemInspection::hasLoadedModel() const
{
    return equipment.analyser && equipment.analyser->isInitialized();
}

/// Hands the region's picture to the archive, once for each line that the region added to the item. Lines without a
/// picture are counted, too. A fault in the archive does not change the item.
void ItemInspection::archiveRegion(const cv::Mat& image, int firstLine)
{
    try {
        QList<SOrgAI_ResInfo> records = item.lines.mid(firstLine);
        if (equipment.settings.isModelDisabled()) {
            records.append(SOrgAI_ResInfo());
            records.last().isOk = true;
        }
        const QString modelName = equipment.analyser ? equipment.analyser->modelName() : QString();
        for (const SOrgAI_ResInfo& record : std::as_const(records)) {
            equipment.archive.savePicture(&tool, modelName, record, ++recordCount, image);
        }
    } catch (...) {
        qWarning() << "Saving the picture of a region failed:" << exceptionText();
    }
}
