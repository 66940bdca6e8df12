#pragma once

#include <QImage>
#include <QMap>
#include <QMutex>
#include <QString>

#include <opencv2/core/mat.hpp>

/// The pictures that wait to be written: what the inspecting thread and the writers share.
///
/// Invariant: a picture that add() took is either in the map or with exactly one writer, until it is on the
/// disk, could not be written, or was dropped as surplus.
///
/// Thread-safe. The object is held by a std::shared_ptr of every writer, so that it outlives the archive that
/// filled it.
class PictureQueue
{
public:
    /// Makes an image of a matrix; called on the writers' threads, several at a time.
    using ImageConverter = QImage (*)(const cv::Mat&);

    /// How many pictures may wait besides those that are being written.
    static constexpr int maxWaiting = 20;

    explicit PictureQueue(ImageConverter converter);

    /// Takes over `image`, to be written to `path`; a picture that waits under that path is replaced.
    /// Of more pictures than may wait, those with the greatest paths are dropped.
    void add(const QString& path, const cv::Mat& image);

    /// Writes waiting pictures, the smallest path first, until none is left.
    /// A picture that cannot be written is given up without a message.
    void drain();

private:
    bool takeFirst(QString* path, cv::Mat* image);
    void dropSurplus(int allowed);
    void write(const QString& path, const cv::Mat& image) const;

    const ImageConverter converter;
    QMutex pendingPicturesMutex;
    QMap<QString, cv::Mat> pendingPictures;
};
