#pragma once

#include "result.h"
#include "rules/expectation.h"
#include "rules/templateparser.h"
#include "rules/textsettings.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace scribo::line {

/// A template of what is printed, "EXP {date:dd.MM.yyyy;+18 months} {lot}"; docs/expected-text.md has the language.
/// Parsed once; expanding takes microseconds and may be done on any thread.
class TextTemplate
{
public:
    /// Longer texts are printed on no line that is read.
    static constexpr int longestText = 256;

    /// The grace window must not make more texts right than these.
    static constexpr int mostTexts = 100;

    /// Fails with the place of the fault and what was expected there.
    static Result<TextTemplate> parse(const QString& text);

    /// As it was parsed.
    const QString& source() const { return text; }

    bool hasMatch() const;
    bool usesLot() const;
    bool usesCounter() const;

    /// What the settings lack for this template, one sentence each: tables, entries of tables, shifts.
    QStringList faults(const TextSettings& settings) const;

    /// The texts that are right for an item. Fails when no lot or counter is set, when one does not fit, when a table
    /// lacks an entry, or when the time is not valid.
    Result<Expectation> expand(const TextContext& context, const TextSettings& settings) const;

private:
    TextTemplate(QString text, std::vector<TemplateElement> elements);

    Result<AcceptedText> expandAt(qint64 moment, const TextContext& context, const TextSettings& settings) const;
    Result<std::vector<AcceptedText>> expandWindow(const TextContext& context, const TextSettings& settings) const;
    int gridSeconds(const TextSettings& settings) const;
    bool dependsOnTime() const;

    QString text;
    std::vector<TemplateElement> elements;
    std::vector<MatchPattern> patterns;
};

} // namespace scribo::line
