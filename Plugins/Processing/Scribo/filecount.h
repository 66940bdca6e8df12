#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <map>

/// The number of regular files in `folder`, of any name but hidden ones; a link to a file counts as one.
/// 0 when the folder cannot be read.
int countFiles(const QString& folder);

/// The number of files in folders that grow without limit, for show.
///
/// A count reads the whole folder and takes about half a microsecond a file: little for a thousand files, 50 ms and
/// more for a day's pictures of a fast line. So a slow count is repeated only after fifty times the time that it took.
/// Until then its result is returned again, also when other folders are counted in between.
class PacedFileCount
{
public:
    using Count = std::function<int(const QString&)>;
    using Clock = std::function<std::chrono::nanoseconds()>;

    /// A count that takes no longer than this is repeated every time.
    static constexpr std::chrono::milliseconds quick{20};
    static constexpr int pausePerCount = 50;

    explicit PacedFileCount(
        Count count = countFiles,
        Clock clock = [] { return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()); });

    int operator()(const QString& folder);

private:
    struct SlowCount
    {
        int files;
        std::chrono::nanoseconds due; ///< when to count again
    };

    void forgetDue(std::chrono::nanoseconds now);

    Count count;
    Clock clock;
    std::map<QString, SlowCount> slowCounts; ///< by folder
};
