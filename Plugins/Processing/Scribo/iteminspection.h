#pragma once

#include "resinfo.h"

#include <QList>
#include <QRectF>
#include <QString>

#include <opencv2/core/mat.hpp>

#include <vector>

class OCRAnalyser;
class PictureArchive;
class Tool;
struct PluginSettings;
struct RegionCut;

/// What an inspection finds out about one item.
struct InspectedItem
{
    QList<SOrgAI_ResInfo> lines; ///< judged, in the order of the regions, with boxes in picture coordinates
    QList<int> mismatches; ///< positions in the readings that differ from the reference
    bool isOk = true;
    bool isRead = false; ///< whether a loaded model was asked

    /// An item that could not be inspected at all.
    static InspectedItem failed();
};

/// Inspects one item: cuts its regions out of the picture, has each of them read, judges the lines and hands the
/// pictures to the archive.
///
/// A region that cannot be read gives a line with the score -1 whose text says why, and makes the item NG. With the
/// model disabled nothing is read, the regions are archived as OK, and the item stays OK.
class ItemInspection
{
public:
    /// What the inspections of all items share. Everything must outlive the inspection.
    struct Equipment
    {
        PluginSettings& settings; ///< switches, reference and limits; receives what was read
        PictureArchive& archive;
        OCRAnalyser* analyser; ///< null when no model has been chosen
        const QString& loadFault; ///< follows the message of a model that is not loaded
    };

    /// `picture` is that of item `index` of `tool`, and may be empty; `pictureSize` is what the host says of it.
    ItemInspection(const Equipment& equipment, Tool& tool, int index, cv::Mat picture, const cv::Size& pictureSize);

    /// Inspects these regions. A region that is below a pixel in width or height is skipped.
    /// Called once. Throws when there is no memory left.
    InspectedItem inspect(const QList<QRectF>& regions);

private:
    cv::Mat regionImage(const cv::Rect& region) const;
    void missRegion(const QRectF& region);
    void inspectRegion(const RegionCut& region);
    void readRegion(const cv::Mat& image, const RegionCut& region);
    bool judgeLines(const std::vector<SOrgAI_ResInfo>& lines, const QRectF& region);
    void failRegion(const cv::Rect& box);
    QString faultMessage() const;
    bool hasLoadedModel() const;
    void archiveRegion(const cv::Mat& image, int firstLine);

    const Equipment equipment;
    Tool& tool;
    const int index;
    const cv::Mat picture;
    const cv::Size pictureSize;
    InspectedItem item;
    int recordCount = 0; ///< result records so far; they number the item's pictures
};
