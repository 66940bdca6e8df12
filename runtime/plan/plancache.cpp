#include "plancache.h"

#include <algorithm>

namespace scribo::cpu {

Plan* PlanCache::find(int width)
{
    const auto found = std::find_if(
        plans.begin(), plans.end(), [width](const std::unique_ptr<Plan>& plan) { return plan->width() == width; });
    if (found == plans.end()) {
        return nullptr;
    }
    plans.splice(plans.begin(), plans, found);
    return plans.front().get();
}

Plan* PlanCache::insert(std::unique_ptr<Plan> plan)
{
    plans.push_front(std::move(plan));
    total += plans.front()->heldSize();
    while (total > most && plans.size() > 1) {
        total -= plans.back()->heldSize();
        plans.pop_back();
    }
    return plans.front().get();
}

} // namespace scribo::cpu
