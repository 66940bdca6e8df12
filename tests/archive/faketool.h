#pragma once

#include "tool.h"

/// A host tool whose answers are plain members.
class FakeTool : public Tool
{
public:
    QString removable;
    QString directory;
    QString identity = QStringLiteral("C1_T1");
    bool allowed = true;
    cv::Mat picture;
    QList<QRectF> regionList;

    QString removableDiskPath() override { return removable; }
    QString toolIdentity() override { return identity; }
    QString toolDirectory() override { return directory; }
    bool savingAllowed() override { return allowed; }
    int imageWidth() override { return picture.cols; }
    int imageHeight() override { return picture.rows; }
    cv::Mat image(int) override { return picture; }
    QList<QRectF> regions(int) override { return regionList; }
    bool upstreamPose(const QString&, int, PosePair*) override { return false; }
};
