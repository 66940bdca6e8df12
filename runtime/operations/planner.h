#pragma once

#include "plan/model.h"
#include "plan/plan.h"

#include <memory>
#include <string>

namespace scribo::cpu {

/// Plans with more working memory than this are refused: no picture needs it, a damaged engine may.
constexpr std::size_t maximumPlanBytes = std::size_t(1) << 30;

/// A plan of `model` for an input of `width` columns. Null, with a sentence in `error`, when there is
/// none. Throws std::bad_alloc.
std::unique_ptr<Plan> makePlan(Model& model, int width, std::string* error);

} // namespace scribo::cpu
