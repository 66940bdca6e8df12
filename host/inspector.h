#pragma once

#include "filetool.h"
#include "inspectionresult.h"
#include "processorinterface.h"
#include "taughtregion.h"

#include <QImage>

/// How the processor is set to compare readings.
Comparison comparisonOf(ProcessorInterface& processor);

/// Takes pictures through a processor: each picture is a cycle, each of its regions an item of it.
///
/// The processor's settings live as long as its instance, so automatic comparison goes on learning from one
/// picture to the next.
class Inspector
{
public:
    /// `processor` must be an instance made for `tool`, with its settings loaded.
    Inspector(ProcessorInterface& processor, FileTool& tool);

    /// Inspects one picture, as readPicture() gives it. A region's own reference and count stand in for those
    /// of the settings while it is inspected; the reference only with fixed comparison, since automatic
    /// comparison learns its own.
    PictureResult inspect(const QString& name, const cv::Mat& picture, const QList<TaughtRegion>& regions);

    /// The picture that was inspected last, at its own size, with what the processor draws over it.
    QImage overlay();

private:
    RegionResult inspectRegion(int index, const TaughtRegion& region);
    void inspectItem(int index, RegionResult* result);
    Archiving archivingOf(bool isOk);

    ProcessorInterface& processor;
    FileTool& tool;
    int itemCount = 0; ///< of the picture inspected last
};
