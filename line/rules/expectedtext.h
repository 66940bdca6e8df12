#pragma once

#include "result.h"
#include "rules/expectation.h"
#include "rules/textsettings.h"
#include "rules/texttemplate.h"

#include <QString>

namespace scribo::line {

/// What is expected in one region of a job: a template together with the settings that it needs. Copies are cheap
/// enough to keep one for each job and region; any thread may ask.
class ExpectedText
{
public:
    /// Fails when the template has a fault or the settings lack something that it needs.
    static Result<ExpectedText> create(const QString& text, const TextSettings& settings);

    /// What is right for the item of a trigger. A failure is the reason why the item cannot be OK: no lot is set, say.
    Result<Expectation> at(const TextContext& context) const { return rule.expand(context, settings); }

    /// Whether the engine judges the reading, since no fixed text can be handed to the plug-in.
    bool hasMatch() const { return rule.hasMatch(); }

    /// Whether a lot or counter has to be set before the first trigger.
    bool usesLot() const { return rule.usesLot(); }
    bool usesCounter() const { return rule.usesCounter(); }

    const QString& source() const { return rule.source(); }

private:
    ExpectedText(TextTemplate rule, TextSettings settings);

    TextTemplate rule;
    TextSettings settings;
};

} // namespace scribo::line
