#pragma once

#include "result.h"

#include "plan/model.h"
#include "plan/plan.h"

#include <memory>

namespace scribo::cpu {

/// Plans with more working memory than this are refused: no picture needs it, a damaged engine may.
constexpr std::size_t maximumPlanBytes = std::size_t(1) << 30;

/// A plan of `model` for an input of `width` columns; never null. Throws std::bad_alloc.
Result<std::unique_ptr<Plan>> makePlan(Model& model, int width);

} // namespace scribo::cpu
