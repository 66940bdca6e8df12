#include "picturetool.h"

namespace scribo::host {

namespace {

/// Below a device no folder can be made. The processor prepares the folders of its archive whether or not pictures are
/// saved; this keeps it from leaving them in the working directory.
const QString nowhere = QStringLiteral("/dev/null/");

QString withSlash(const QString& folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString withoutSlash(QString folder)
{
    while (folder.size() > 1 && folder.endsWith(QLatin1Char('/'))) {
        folder.chop(1);
    }
    return folder;
}

} // namespace

PictureTool::PictureTool()
{
    setArchive({});
}

void PictureTool::setCycle(
    const cv::Mat& newPicture, const QList<QRectF>& newRegions, const std::optional<PosePair>& newPose)
{
    picture = newPicture;
    taughtRegions = newRegions;
    partPose = newPose;
}

void PictureTool::setArchive(const ArchivePlace& place)
{
    archive = place;
    archive.folder = place.folder.isEmpty() ? nowhere : withSlash(place.folder);
    archive.removable = withoutSlash(place.removable);
}

cv::Mat PictureTool::image(int /*index*/)
{
    return picture;
}

QList<QRectF> PictureTool::regions(int index)
{
    if (index < 0 || index >= taughtRegions.size()) {
        return {};
    }
    return {taughtRegions[index]};
}

bool PictureTool::upstreamPose(const QString& /*toolName*/, int /*index*/, PosePair* pose)
{
    if (!partPose) {
        return false;
    }
    *pose = *partPose;
    return true;
}

} // namespace scribo::host
