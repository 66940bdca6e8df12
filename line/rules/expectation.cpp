#include "rules/expectation.h"

#include <utility>

namespace scribo::line {

Expectation::Expectation(std::vector<AcceptedText> texts, std::vector<MatchPattern> patterns)
    : accepted(std::move(texts))
    , matchPatterns(std::move(patterns))
{
}

} // namespace scribo::line
