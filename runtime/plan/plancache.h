#pragma once

#include "plan.h"

#include <list>
#include <memory>

namespace scribo::cpu {

/// The plans of the widths that were used last.
class PlanCache
{
public:
    /// Every width that a detector of the usual 32 to 320 columns can ask for finds a place; a wider
    /// range forgets what it has not used for longest.
    static constexpr std::size_t maximumPlans = 320;

    explicit PlanCache(std::size_t limit = maximumPlans)
        : most(limit)
    {
    }

    /// The plan for `width`, from now on the one used last; null when there is none.
    Plan* find(int width);
    /// Keeps `plan` as the one used last, and drops the one not used for longest if there are too many.
    Plan* insert(std::unique_ptr<Plan> plan);

    std::size_t size() const { return plans.size(); }

private:
    std::size_t most;
    /// The one used last in front.
    std::list<std::unique_ptr<Plan>> plans;
};

} // namespace scribo::cpu
