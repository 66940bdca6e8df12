#pragma once

// oneDNN works with the OpenMP library that it was built with, whatever compiler builds us; this is
// all of it that we need.
extern "C" {
int omp_get_max_threads();
void omp_set_num_threads(int count);
}

namespace scribo::cpu {

/// While it lives, oneDNN works on the calling thread alone: a network of our size does not pay for
/// a team, and the teams of two detectors would fight over the processor. Other threads, and this
/// one afterwards, are not affected.
class SingleThread
{
public:
    SingleThread()
        : before(omp_get_max_threads())
    {
        omp_set_num_threads(1);
    }
    ~SingleThread() { omp_set_num_threads(before); }

    SingleThread(const SingleThread&) = delete;
    SingleThread& operator=(const SingleThread&) = delete;

private:
    int before;
};

} // namespace scribo::cpu
