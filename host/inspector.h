#pragma once

#include "inspectionresult.h"
#include "picturetool.h"
#include "processorplugin.h"
#include "taughtregion.h"

#include <QImage>

namespace scribo::host {

/// How the processor is set to compare readings.
Comparison comparisonOf(ProcessorInterface& processor);

/// Inspects pictures in memory with a processor of its own. Each picture is a cycle, and each of its regions is an item
/// of the cycle. An inspector knows nothing of files.
///
/// The processor's settings live as long as the inspector, so automatic comparison goes on learning from one picture to
/// the next. One thread at a time uses an inspector; different ones may work on different threads at the same time.
class Inspector
{
public:
    /// Makes the processor, with its default settings and no model loaded. The error starts with the plug-in's file.
    static Result<std::unique_ptr<Inspector>> make(const ProcessorPlugin& plugin);

    /// To set parameters; see parameters.h and settings.h.
    ProcessorInterface& processor() { return *instance; }
    void setArchive(const ArchivePlace& place) { tool.setArchive(place); }

    /// Inspects one picture: 8 bits, one channel or three (red, green, blue). The picture must not change meanwhile.
    /// A region's own reference and count replace those of the settings while the region is inspected. The reference
    /// does so with fixed comparison only, because automatic comparison learns its own. With `pose` the processor turns
    /// and shifts the regions with the part.
    InspectionResult inspect(
        const cv::Mat& picture, const QList<TaughtRegion>& regions, const std::optional<PosePair>& pose = std::nullopt);

    /// The picture that was inspected last, at its own size, with what the processor draws over it.
    QImage overlay();

private:
    Inspector() = default;

    RegionResult inspectRegion(int index, const TaughtRegion& region);
    void inspectItem(int index, RegionResult* result);
    Archiving archivingOf(bool isOk);

    PictureTool tool;
    std::unique_ptr<ProcessorInterface> instance; // made for `tool`, so it goes first
    int itemCount = 0; ///< of the picture inspected last
};

} // namespace scribo::host
