#pragma once

#include <QDateTime>
#include <QString>

#include <opencv2/core/mat.hpp>

namespace scribo::line {

/// A picture of one part, as a source gives it.
struct Frame
{
    /// 8 bits, one channel (grey) or three (red, green, blue order); owns its pixels.
    cv::Mat picture;
    /// When it was taken, in UTC.
    QDateTime takenAt;
    /// A file's name or a camera's frame number, for people.
    QString name;
};

/// Why a source has no picture.
enum class CaptureFault {
    timeout, ///< none came within the time that was given
    incomplete, ///< one came with pixels missing, or it cannot be decoded
    lost, ///< the camera, the folder or the stream is not there; the source tries to get it back by itself
    ended, ///< there will be no more pictures: the last of a folder or a film was taken
    interrupted, ///< interrupt() was called
};

/// A capture that failed: what kind of fault, and one sentence for a person without a full stop at its end.
struct CaptureError
{
    CaptureFault fault = CaptureFault::lost;
    QString message;
};

} // namespace scribo::line
