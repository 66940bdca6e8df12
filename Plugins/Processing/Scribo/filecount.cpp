#include "filecount.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <iterator>
#include <memory>
#include <utility>

namespace {

struct CloseDirectory
{
    void operator()(DIR* directory) const { closedir(directory); }
};

bool isRegularFile(DIR* directory, const dirent& entry)
{
    if (entry.d_type == DT_REG || entry.d_type == DT_DIR) {
        return entry.d_type == DT_REG;
    }
    struct stat status;
    return fstatat(dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

} // namespace

// Read directly, which takes less than half the time of QDirIterator: the inspection waits for it.
int countFiles(const QString& folder)
{
    const std::unique_ptr<DIR, CloseDirectory> directory(opendir(QFile::encodeName(folder).constData()));
    if (!directory) {
        return 0;
    }
    int count = 0;
    while (const dirent* const entry = readdir(directory.get())) {
        if (entry->d_name[0] != '.' && isRegularFile(directory.get(), *entry)) {
            ++count;
        }
    }
    return count;
}

PacedFileCount::PacedFileCount(Count count, Clock clock)
    : count(std::move(count))
    , clock(std::move(clock))
{
}

int PacedFileCount::operator()(const QString& folder)
{
    const std::chrono::nanoseconds start = clock();
    forgetDue(start);
    const auto known = slowCounts.find(folder);
    if (known != slowCounts.end()) {
        return known->second.files;
    }

    const int files = count(folder);
    const std::chrono::nanoseconds end = clock();
    const std::chrono::nanoseconds taken = end - start;
    if (taken > quick) {
        slowCounts[folder] = {files, end + pausePerCount * taken};
    }
    return files;
}

/// Also keeps the folders of past days from piling up.
void PacedFileCount::forgetDue(std::chrono::nanoseconds now)
{
    for (auto entry = slowCounts.begin(); entry != slowCounts.end();) {
        entry = entry->second.due <= now ? slowCounts.erase(entry) : std::next(entry);
    }
}
