#pragma once

#include "core/picturesource.h"
#include "sources/arrivals.h"

#include <atomic>
#include <memory>

namespace scribo::line {

/// A folder that a camera's own software writes pictures into.
struct WatchedFolderOptions
{
    QString folder;
    bool removes = false; ///< deletes a picture once it is taken; else it goes into the folder's subfolder "done"
};

/// Takes each picture file that arrives in a folder, when it is complete, however it arrives: written at once or
/// slowly, renamed, or copied over a network. Files with names that begin with a dot, or that are no picture's, are
/// left alone. Pictures that lie there already are taken too. One that cannot be read goes into the subfolder
/// "unreadable".
///
/// A folder that goes away is looked for until it is back.
class WatchedFolderSource : public PictureSource
{
public:
    explicit WatchedFolderSource(WatchedFolderOptions options);
    ~WatchedFolderSource() override;

    void open(Mode mode) override;
    Result<void> configure(const QJsonObject& settings) override;
    tl::expected<Frame, CaptureError> take(std::chrono::milliseconds timeout) override;
    QString watch() override;
    void interrupt() override;
    void close() override;
    QString description() const override;

private:
    tl::expected<Frame, CaptureError> takeFile(const QString& name);
    void putAway(const QString& name, const QString& subfolder);

    const WatchedFolderOptions options;
    std::unique_ptr<Arrivals> arrivals; ///< null: closed
    std::atomic<bool> isInterrupted{false};
};

} // namespace scribo::line
