#pragma once

#include "core/picturesource.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace scribo::line {

/// How the pictures of a folder are shown.
struct FolderOptions
{
    QString folder;
    std::chrono::milliseconds interval{0}; ///< between two pictures of a free source; 0: as fast as they are judged
    bool repeats = false; ///< begins anew after the last picture
};

/// Replays the picture files of a folder in the order of their names, as a camera would show them. The files are listed
/// when the source is opened; one that cannot be read is an incomplete picture.
class FolderSource : public PictureSource
{
public:
    explicit FolderSource(FolderOptions options);

    void open(Mode newMode) override;
    Result<void> configure(const QJsonObject& settings) override;
    tl::expected<Frame, CaptureError> take(std::chrono::milliseconds timeout) override;
    QString watch() override;
    void interrupt() override;
    void close() override;
    QString description() const override;

private:
    void list();
    bool waitForTurn(std::chrono::milliseconds timeout, bool* isInterrupted);

    const FolderOptions options;
    Mode mode = Mode::triggered;
    QStringList files; ///< paths
    int next = 0;
    std::chrono::steady_clock::time_point turn; ///< of the next picture
    std::mutex mutex;
    std::condition_variable changed;
    bool hasInterruption = false;
};

} // namespace scribo::line
