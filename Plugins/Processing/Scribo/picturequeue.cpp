#include "picturequeue.h"

#include "picturefile.h"

#include <QMutexLocker>
#include <QThread>

#include <exception>
#include <iterator>

PictureQueue::PictureQueue(ImageConverter converter)
    : converter(converter)
{
}

void PictureQueue::add(const QString& path, const cv::Mat& image)
{
    const QMutexLocker lock(&pendingPicturesMutex);
    pendingPictures.insert(path, image);
    // One more than may wait, since a writer is started for every picture and takes one. Writers drop the surplus
    // themselves, but while the host keeps all threads of the pool busy no writer runs, and memory would fill up.
    dropSurplus(maxWaiting + 1);
}

void PictureQueue::drain()
{
    QString path;
    cv::Mat image;
    while (takeFirst(&path, &image)) {
        write(path, image);
        image.release();
        QThread::msleep(1);
    }
}

bool PictureQueue::takeFirst(QString* path, cv::Mat* image)
{
    const QMutexLocker lock(&pendingPicturesMutex);
    if (pendingPictures.isEmpty()) {
        return false;
    }
    *path = pendingPictures.firstKey();
    *image = pendingPictures.take(*path);
    dropSurplus(maxWaiting);
    return true;
}

/// Called with the mutex held.
void PictureQueue::dropSurplus(int allowed)
{
    while (pendingPictures.size() > allowed) {
        pendingPictures.erase(std::prev(pendingPictures.end()));
    }
}

void PictureQueue::write(const QString& path, const cv::Mat& image) const
{
    try {
        writePictureFile(converter(image), path);
    } catch (const std::exception&) {
        // Out of memory, most likely. It costs this picture, not those behind it.
    }
}
