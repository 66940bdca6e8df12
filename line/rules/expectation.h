#pragma once

#include "rules/matchpattern.h"
#include "rules/textpart.h"

#include <QString>

#include <vector>

namespace scribo::line {

/// What a region of one item should read. Never empty.
class Expectation
{
public:
    /// `texts`: at least one, all with the same parts in the same order, the one of the trigger's moment first.
    /// `patterns`: what their match parts have to fit.
    Expectation(std::vector<AcceptedText> texts, std::vector<MatchPattern> patterns);

    /// The texts that are right: one, more where the grace window holds a change of what they show.
    const std::vector<AcceptedText>& texts() const { return accepted; }

    /// The text that is right at the moment of the trigger.
    QString text() const { return accepted.front().text(); }

    /// Whether parts vary, so that no fixed text can stand for it.
    bool hasMatch() const { return !matchPatterns.empty(); }

    const std::vector<MatchPattern>& patterns() const { return matchPatterns; }

private:
    std::vector<AcceptedText> accepted;
    std::vector<MatchPattern> matchPatterns;
};

} // namespace scribo::line
