#include "filetool.h"

void FileTool::setArchiveFolder(const QString& folder)
{
    directory = folder.isEmpty() ? QString::fromLatin1(nowhere) : folder;
    if (!directory.endsWith(QLatin1Char('/'))) {
        directory += QLatin1Char('/');
    }
}

void FileTool::setRemovableFolder(const QString& folder)
{
    removable = folder;
    while (removable.size() > 1 && removable.endsWith(QLatin1Char('/'))) {
        removable.chop(1);
    }
}

cv::Mat FileTool::image(int /*index*/)
{
    return picture;
}

QList<QRectF> FileTool::regions(int index)
{
    if (index < 0 || index >= taughtRegions.size()) {
        return {};
    }
    return {taughtRegions[index]};
}

bool FileTool::upstreamPose(const QString& /*toolName*/, int /*index*/, PosePair* /*pose*/)
{
    return false;
}
