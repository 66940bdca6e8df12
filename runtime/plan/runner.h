#pragma once

#include "plan.h"

#include "threads/helper.h"

#include <memory>

namespace scribo::cpu {

/// Runs plans, each with the helper or without it, whichever has taken less time. Used by one thread at a time.
class Runner
{
public:
    /// Throws dnnl::error and std::bad_alloc.
    explicit Runner(const dnnl::engine& processor);

    /// Runs a bound plan on the calling thread. All results are there when it returns. Throws dnnl::error and
    /// std::bad_alloc.
    void run(Plan& plan);

private:
    dnnl::stream stream;
    std::shared_ptr<Helper> helper;
};

} // namespace scribo::cpu
