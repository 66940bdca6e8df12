#pragma once

#include <QList>
#include <QRectF>
#include <QString>

#include <opencv2/core/mat.hpp>

/// The pose of the part in the picture, as an upstream tool found it: where the part was when the
/// regions were taught and where it is now. Positions in pixels, angles in degrees.
struct PosePair
{
    float taughtX = 0;
    float taughtY = 0;
    float taughtAngle = 0;
    float currentX = 0;
    float currentY = 0;
    float currentAngle = 0;
};

/// The part of the host's tool that concerns the whole station.
class ToolInterface
{
public:
    virtual ~ToolInterface() = default;

    /// The mount point of the removable disk that pictures go to, while it is mounted; empty: save on the system
    /// disk. Folders are made below this path without a limit. Whether a disk is there is not checked.
    virtual QString removableDiskPath() = 0;
};

/// The host's tool that a processor instance serves. All operations are called on the thread that
/// calls the processor. The host owns the object, which outlives the processor instances made for it.
class Tool : public ToolInterface
{
public:
    /// Camera and tool identifier, for example "C1_T1"; part of folder and file names.
    virtual QString toolIdentity() = 0;
    /// Base directory for saved pictures on the system disk, with its trailing separator.
    virtual QString toolDirectory() = 0;
    /// False while the host forbids saving pictures.
    virtual bool savingAllowed() = 0;

    /// Size in pixels of the pictures that image() hands over.
    virtual int imageWidth() = 0;
    virtual int imageHeight() = 0;

    /// The picture of item `index`: 8 bits, one channel (grey) or three (red, green, blue order).
    /// The matrix shares the host's pixels; the processor does not write to them.
    virtual cv::Mat image(int index) = 0;
    /// The inspection regions of item `index`, in pixels of the picture.
    virtual QList<QRectF> regions(int index) = 0;
    /// Fills `pose` with what the upstream tool named `toolName` found for item `index`.
    /// Returns false, leaving `pose` alone, when there is no such tool or it has no pose for the item.
    virtual bool upstreamPose(const QString& toolName, int index, PosePair* pose) = 0;
};
