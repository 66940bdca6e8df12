#pragma once

#include "core/frame.h"

#include <chrono>
#include <tl/expected.hpp>

namespace scribo::line {

/// Where pictures come from. One thread opens a source, takes pictures from it and closes it; only interrupt() may be
/// called on another thread.
///
/// A source that loses its camera answers CaptureFault::lost at once, tries to connect again within take() or beside it
/// at least every two seconds, and gives pictures again within five seconds of the camera's return. Nothing throws.
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

    /// Takes one picture, and waits at most `timeout` for it.
    virtual tl::expected<Frame, CaptureError> take(std::chrono::milliseconds timeout) = 0;

    /// Ends a take() that waits, and every later one, with CaptureFault::interrupted. May be called on any thread.
    virtual void interrupt() = 0;

    /// Gives the camera back. open() may be called again.
    virtual void close() = 0;

    /// What it is, for people: "folder samples", "camera Basler-12345".
    virtual QString description() const = 0;
};

} // namespace scribo::line
