#pragma once

#include "tool.h"

#include <optional>

namespace scribo::host {

/// Where the processor archives pictures of regions, and as whose.
struct ArchivePlace
{
    QString identity = QStringLiteral("C1_T1"); ///< camera and tool; part of folder and file names
    QString folder; ///< on the system disk; empty: nowhere
    QString removable; ///< a folder that stands for a removable disk and is used instead; empty: there is none
    bool isSavingAllowed = false;
};

/// The host's tool over pictures in memory: one picture at a time, whose regions are items of their own.
///
/// Item i of a picture is region i alone. The processor reports text and count only of the region that it judged last.
/// With one region for each item, text, record and verdict of every region are known. The picture is OK when all items
/// of its cycle are.
///
/// Colour pictures are handed over in red, green, blue order, so that the picture archive saves true colours.
class PictureTool : public Tool
{
public:
    PictureTool();

    /// What the next cycle is about. `picture`: 8 bits, one channel or three (red, green, blue); the tool shares its
    /// pixels. `pose`: where the part is, whatever upstream tool the processor asks for; without it the regions stay
    /// where they were taught.
    void setCycle(const cv::Mat& newPicture, const QList<QRectF>& newRegions, const std::optional<PosePair>& newPose);
    void setArchive(const ArchivePlace& place);

    QString toolIdentity() override { return archive.identity; }
    QString toolDirectory() override { return archive.folder; }
    QString removableDiskPath() override { return archive.removable; }
    bool savingAllowed() override { return archive.isSavingAllowed; }
    int imageWidth() override { return picture.cols; }
    int imageHeight() override { return picture.rows; }
    cv::Mat image(int index) override;
    QList<QRectF> regions(int index) override;
    bool upstreamPose(const QString& toolName, int index, PosePair* pose) override;

private:
    cv::Mat picture;
    QList<QRectF> taughtRegions;
    std::optional<PosePair> partPose;
    ArchivePlace archive; ///< paths as the processor expects them
};

} // namespace scribo::host
