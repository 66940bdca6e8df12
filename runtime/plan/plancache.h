#pragma once

#include "plan.h"

#include <list>
#include <memory>

namespace scribo::cpu {

/// The plans of the widths that were used last.
class PlanCache
{
public:
    /// Bytes of plans that are kept. A small recogniser's detector, which asks for widths from 32 to
    /// 320, finds all of them again; a network of hundreds of steps keeps the last dozen or so.
    static constexpr std::size_t maximumSize = std::size_t(96) << 20;

    explicit PlanCache(std::size_t most = maximumSize)
        : most(most)
    {
    }

    /// The plan for `width`, from now on the one used last; null when there is none.
    Plan* find(int width);
    /// Keeps `plan` as the one used last, and drops those not used for longest until the rest fits.
    Plan* insert(std::unique_ptr<Plan> plan);

    std::size_t count() const { return plans.size(); }
    /// Bytes, as Plan::heldSize() counts them.
    std::size_t size() const { return total; }

private:
    std::size_t most;
    std::size_t total = 0;
    /// The one used last in front.
    std::list<std::unique_ptr<Plan>> plans;
};

} // namespace scribo::cpu
