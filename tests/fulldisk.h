#pragma once

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

/// While it lives, no file of this process or of one that it starts can grow beyond `room` bytes, as on a full disk: a
/// write first falls short, then fails.
class FullDisk
{
public:
    explicit FullDisk(rlim_t room = 0)
        : handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{room, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before{};
    void (*handler)(int);
};

/// Whether /dev/full is the device; where it is missing, writing to it would leave a file there.
inline bool hasFullDevice()
{
    struct stat status = {};
    return stat("/dev/full", &status) == 0 && S_ISCHR(status.st_mode);
}
