#pragma once

#include "tool.h"

#include <optional>

/// A host tool that answers what the test says, the same for every item. Colour pictures are in RGB order.
class ScriptedTool : public Tool
{
public:
    cv::Mat picture = cv::Mat(60, 200, CV_8UC1, cv::Scalar(200));
    std::optional<cv::Size> announced; ///< size of its pictures; that of `picture` when there is none
    QList<QRectF> taughtRegions = {QRectF(10, 20, 100, 30)};
    QString removableDisk; ///< empty: none
    QString directory;
    bool maySave = true;
    bool hasPose = false;
    PosePair pose;
    QString askedPoseOf;

    QString removableDiskPath() override { return removableDisk; }
    QString toolIdentity() override { return QStringLiteral("C1_T1"); }
    QString toolDirectory() override { return directory; }
    bool savingAllowed() override { return maySave; }
    int imageWidth() override { return announced.value_or(picture.size()).width; }
    int imageHeight() override { return announced.value_or(picture.size()).height; }
    cv::Mat image(int) override { return picture; }
    QList<QRectF> regions(int) override { return taughtRegions; }
    bool upstreamPose(const QString& toolName, int, PosePair* found) override
    {
        askedPoseOf = toolName;
        if (hasPose) {
            *found = pose;
        }
        return hasPose;
    }
};
