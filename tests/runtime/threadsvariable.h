#pragma once

#include <cstdlib>
#include <string>

namespace scribo::test {

/// Sets the variable that limits the threads, and puts back what it was.
class ThreadsVariable
{
public:
    explicit ThreadsVariable(const char* text)
        : before(std::getenv(name) ? std::getenv(name) : "")
    {
        setenv(name, text, 1);
    }
    ~ThreadsVariable() { before.empty() ? unsetenv(name) : setenv(name, before.c_str(), 1); }

private:
    static constexpr const char* name = "SCRIBO_THREADS";
    std::string before;
};

} // namespace scribo::test
