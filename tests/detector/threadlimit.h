#pragma once

#include <pthread.h>

#include <cstddef>

/// While it lives no thread of default attributes can be made: their stacks would be larger than the
/// address space.
class NoMoreThreads
{
public:
    NoMoreThreads()
    {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_getstacksize(&attributes, &stackSize);
        setStackSize(std::size_t{1} << 50);
        pthread_attr_destroy(&attributes);
    }
    ~NoMoreThreads() { setStackSize(stackSize); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    static void setStackSize(std::size_t size)
    {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_setstacksize(&attributes, size);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }

    std::size_t stackSize = 0;
};
