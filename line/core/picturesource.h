#pragma once

#include "core/frame.h"
#include "result.h"

#include <QJsonObject>

#include <chrono>
#include <tl/expected.hpp>

namespace scribo::line {

/// Where pictures come from. One thread opens a source, takes pictures from it and closes it; only interrupt() may be
/// called on another thread.
///
/// A source that loses its camera answers CaptureFault::lost at once, tries to connect again in take() and watch() at
/// least every two seconds, and gives pictures again within five seconds of the camera's return. Nothing throws.
class PictureSource
{
public:
    virtual ~PictureSource() = default;

    /// How a picture comes to be taken.
    enum class Mode {
        triggered, ///< each take() exposes a picture, or picks the first one that was exposed after the call
        free, ///< take() gives each picture in turn as it comes; the source keeps a few that wait
    };

    /// Connects. A camera that is not there is no error: take() then answers CaptureFault::lost until it is.
    virtual void open(Mode mode) = 0;

    /// Sets the camera up for a job, as its "source" object says: "exposureMicroseconds" and "gain" for cameras that
    /// have them. Called between two takes, and again after a lost camera is back by the source itself. Settings that
    /// the source does not have are left out.
    virtual Result<void> configure(const QJsonObject& settings) = 0;

    /// Takes one picture, and waits at most `timeout` for it.
    virtual tl::expected<Frame, CaptureError> take(std::chrono::milliseconds timeout) = 0;

    /// Looks after the connection while no picture is wanted: finds out that the camera is gone and tries to get it
    /// back. Called about five times a second between takes; takes at most a second. Returns what is wrong; empty:
    /// nothing.
    virtual QString watch() = 0;

    /// Ends a take() that waits, and every later one, with CaptureFault::interrupted. May be called on any thread.
    virtual void interrupt() = 0;

    /// Gives the camera back. open() may be called again.
    virtual void close() = 0;

    /// What it is, for people: "folder samples", "camera Basler-12345".
    virtual QString description() const = 0;
};

} // namespace scribo::line
