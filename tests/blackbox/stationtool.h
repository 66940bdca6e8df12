#pragma once

#include "tool.h"

/// A host tool for one picture, each region an item of its own: item i reads region i.
class StationTool : public Tool
{
public:
    cv::Mat picture;
    QList<QRectF> taughtRegions;
    QString directory;

    QString removableDiskPath() override { return {}; }
    QString toolIdentity() override { return "C1_T1"; }
    QString toolDirectory() override { return directory; }
    bool savingAllowed() override { return true; }
    int imageWidth() override { return picture.cols; }
    int imageHeight() override { return picture.rows; }
    cv::Mat image(int) override { return picture; }
    QList<QRectF> regions(int index) override { return taughtRegions.mid(index, 1); }
    bool upstreamPose(const QString&, int, PosePair*) override { return false; }
};
