#pragma once

#include "tool.h"

/// The host's tool over files: one picture at a time, whose regions are items of their own.
///
/// Item i of a picture is region i alone. The processor reports the text and the count of the region that
/// it judged last only, so one region an item makes text, record and verdict of every region known; the
/// verdicts of a cycle together are the picture's.
///
/// Colour pictures are handed over in red, green, blue order: the picture archive then saves true colours.
class FileTool : public Tool
{
public:
    /// The picture that the items are cut from: 8 bits, one channel or three (red, green, blue). The tool
    /// shares its pixels.
    void setPicture(const cv::Mat& newPicture) { picture = newPicture; }
    void setRegions(const QList<QRectF>& newRegions) { taughtRegions = newRegions; }
    void setIdentity(const QString& newIdentity) { identity = newIdentity; }
    /// Where pictures are archived on the system disk; empty: nowhere.
    void setArchiveFolder(const QString& folder);
    /// Where pictures are archived instead, as on a removable disk; empty: on the system disk.
    void setRemovableFolder(const QString& folder);
    void allowSaving(bool allowed) { saving = allowed; }

    QString toolIdentity() override { return identity; }
    QString toolDirectory() override { return directory; }
    QString removableDiskPath() override { return removable; }
    bool savingAllowed() override { return saving; }
    int imageWidth() override { return picture.cols; }
    int imageHeight() override { return picture.rows; }
    cv::Mat image(int index) override;
    QList<QRectF> regions(int index) override;
    /// A file has no upstream tool.
    bool upstreamPose(const QString& toolName, int index, PosePair* pose) override;

private:
    /// Below a device no folder can be made. The processor prepares the folders of its archive whether or
    /// not pictures are saved; this keeps it from leaving them in the working directory.
    static constexpr char nowhere[] = "/dev/null/";

    cv::Mat picture;
    QList<QRectF> taughtRegions;
    QString identity = QStringLiteral("C1_T1");
    QString directory = QString::fromLatin1(nowhere);
    QString removable;
    bool saving = false;
};
