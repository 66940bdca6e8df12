#include "rules/textcomparison.h"

#include "rules/textalignment.h"
#include "rules/textmatcher.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace scribo::line {

namespace {

using Outcome = MatchPattern::Outcome;

/// So many of the accepted texts are looked at to find the nearest.
constexpr std::size_t mostAligned = 8;

AcceptedText keptOf(const AcceptedText& accepted, const CharacterRules& characters)
{
    AcceptedText kept = accepted;
    for (TextPart& part : kept.parts) {
        if (part.kind != PartKind::match) {
            part.text = characters.kept(part.text);
        }
    }
    return kept;
}

/// So many texts are tried with the patterns. A line with one or two match parts and a separator needs some dozens.
constexpr int mostTries = 250;

/// A text within a sentence. Quotes show spaces at its ends, and that it is empty.
QString shown(const QString& text)
{
    return text.isEmpty() || text.trimmed() != text ? QStringLiteral("\"%1\"").arg(text) : text;
}

/// A difference and a sentence about it.
struct Found
{
    TextDifference difference = TextDifference::none;
    QString sentence;
};

/// Compares one reading, without its ignored characters.
class Comparer
{
public:
    Comparer(QString reading, const Expectation& expected, const CharacterRules& characters)
        : reading(std::move(reading))
        , expected(expected)
        , characters(characters)
    {
    }

    TextComparison run()
    {
        bool isUndecided = false;
        int triesLeft = mostTries;
        for (const AcceptedText& text : expected.texts()) {
            accepted.push_back(keptOf(text, characters));
            const Outcome outcome = matchText(reading, accepted.back(), expected.patterns(), characters, &triesLeft);
            if (outcome == Outcome::fits) {
                return {TextDifference::none, QString(), text.text()};
            }
            isUndecided = isUndecided || outcome == Outcome::undecided;
        }
        if (reading.isEmpty()) {
            return different(0, TextDifference::count, QStringLiteral("nothing was read"));
        }
        if (reading.size() > MatchPattern::longestText) {
            return different(0, TextDifference::count,
                QStringLiteral("%1 characters were read, which is more than can be compared").arg(reading.size()));
        }
        return isUndecided
            ? different(0, TextDifference::pattern, QStringLiteral("the pattern takes too long to try on this reading"))
            : explained();
    }

private:
    TextComparison different(std::size_t text, TextDifference difference, const QString& reason) const
    {
        return {difference, reason, expected.texts()[text].text()};
    }

    TextComparison explained() const
    {
        std::size_t nearest = 0;
        TextAlignment best = alignText(reading, accepted[0], characters);
        for (std::size_t i = 1; i < std::min(accepted.size(), mostAligned); ++i) {
            TextAlignment alignment = alignText(reading, accepted[i], characters);
            if (alignment.cost < best.cost) {
                best = std::move(alignment);
                nearest = i;
            }
        }
        if (!expected.hasMatch()) {
            return explainedText(nearest, best);
        }
        const Found first = firstDifference(accepted[nearest], best);
        return different(nearest, first.difference, first.sentence);
    }

    TextComparison explainedText(std::size_t text, const TextAlignment& alignment) const
    {
        const int tooMany = reading.size() - accepted[text].text().size();
        const Found first = firstDifference(accepted[text], alignment);
        if (tooMany == 0) {
            return different(text, first.difference, first.sentence);
        }
        const int count = std::abs(tooMany);
        const QString reason = QStringLiteral("%1 %2 too %3: %4")
                                   .arg(count)
                                   .arg(count == 1 ? QStringLiteral("character") : QStringLiteral("characters"),
                                       tooMany > 0 ? QStringLiteral("many") : QStringLiteral("few"), first.sentence);
        return different(text, TextDifference::count, reason);
    }

    /// The first place that differs.
    Found firstDifference(const AcceptedText& text, const TextAlignment& alignment) const
    {
        if (!alignment.before.isEmpty()) {
            return {
                TextDifference::text, QStringLiteral("%1 at the start is not expected").arg(shown(alignment.before))};
        }
        for (std::size_t i = 0; i < text.parts.size(); ++i) {
            const Found found = partDifference(text.parts[i], alignment.read[i], alignment.agrees[i]);
            if (found.difference != TextDifference::none) {
                return found;
            }
        }
        if (!alignment.after.isEmpty()) {
            return {TextDifference::text, QStringLiteral("%1 at the end is not expected").arg(shown(alignment.after))};
        }
        // Each part agrees as the alignment divides the reading, but then the reading would fit.
        return {TextDifference::text, QStringLiteral("%1 does not fit").arg(shown(reading))};
    }

    Found partDifference(const TextPart& part, const QString& read, bool agrees) const
    {
        if (part.kind == PartKind::match) {
            const bool fits = expected.patterns()[part.pattern].match(read) == Outcome::fits;
            return fits
                ? Found()
                : Found{TextDifference::pattern, QStringLiteral("%1 does not fit %2").arg(shown(read), part.text)};
        }
        if (agrees) {
            return {};
        }
        return {TextDifference::text,
            read.isEmpty()
                ? QStringLiteral("%1 is missing, expected %2").arg(partName(part.kind), shown(part.text))
                : QStringLiteral("%1 is %2, expected %3").arg(partName(part.kind), shown(read), shown(part.text))};
    }

    const QString reading;
    const Expectation& expected;
    const CharacterRules& characters;
    std::vector<AcceptedText> accepted; ///< without ignored characters
};

} // namespace

TextComparison compareText(const QString& reading, const Expectation& expected, const CharacterRules& characters)
{
    return Comparer(characters.kept(reading), expected, characters).run();
}

} // namespace scribo::line
