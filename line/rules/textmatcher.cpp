#include "rules/textmatcher.h"

#include <algorithm>

namespace scribo::line {

namespace {

using Outcome = MatchPattern::Outcome;

class TextMatcher
{
public:
    TextMatcher(const QString& reading, const AcceptedText& accepted, const std::vector<MatchPattern>& patterns,
        const CharacterRules& characters, int* triesLeft)
        : reading(reading)
        , parts(accepted.parts)
        , patterns(patterns)
        , characters(characters)
        , triesLeft(triesLeft)
    {
    }

    /// Walks over the parts and keeps all places in the reading at which a part may begin.
    Outcome run()
    {
        std::vector<bool> begins(reading.size() + 1, false);
        begins[0] = true;
        for (std::size_t part = 0; part < parts.size(); ++part) {
            begins = parts[part].kind == PartKind::match ? pastMatch(part, begins) : pastText(parts[part].text, begins);
        }
        if (begins[reading.size()]) {
            return Outcome::fits;
        }
        return isUndecided ? Outcome::undecided : Outcome::differs;
    }

private:
    bool isAt(const QString& text, int begin) const
    {
        if (begin + text.size() > reading.size()) {
            return false;
        }
        for (int i = 0; i < text.size(); ++i) {
            if (!characters.isSame(reading[begin + i], text[i])) {
                return false;
            }
        }
        return true;
    }

    std::vector<bool> pastText(const QString& text, const std::vector<bool>& begins) const
    {
        std::vector<bool> ends(begins.size(), false);
        for (int begin = 0; begin <= reading.size(); ++begin) {
            if (begins[begin] && isAt(text, begin)) {
                ends[begin + text.size()] = true;
            }
        }
        return ends;
    }

    std::vector<bool> pastMatch(std::size_t part, const std::vector<bool>& begins)
    {
        std::vector<bool> ends(begins.size(), false);
        const std::vector<int> candidates = possibleEnds(part);
        for (int begin = 0; begin <= reading.size(); ++begin) {
            if (!begins[begin]) {
                continue;
            }
            for (const int end : candidates) {
                if (end >= begin && !ends[end] && fits(parts[part].pattern, begin, end)) {
                    ends[end] = true;
                }
            }
        }
        return ends;
    }

    /// Where a match part may end: before the text that stands between it and the next one, or the end.
    std::vector<int> possibleEnds(std::size_t part) const
    {
        QString following;
        std::size_t next = part + 1;
        for (; next < parts.size() && parts[next].kind != PartKind::match; ++next) {
            following += parts[next].text;
        }
        const int last = reading.size() - following.size();
        std::vector<int> ends;
        for (int end = next == parts.size() ? std::max(last, 0) : 0; end <= last; ++end) {
            if (isAt(following, end)) {
                ends.push_back(end);
            }
        }
        return ends;
    }

    bool fits(int pattern, int begin, int end)
    {
        if (isUndecided || --*triesLeft < 0) {
            isUndecided = true;
            return false;
        }
        const Outcome outcome = patterns[pattern].match(reading.mid(begin, end - begin));
        isUndecided = outcome == Outcome::undecided;
        return outcome == Outcome::fits;
    }

    const QString& reading;
    const std::vector<TextPart>& parts;
    const std::vector<MatchPattern>& patterns;
    const CharacterRules& characters;
    int* triesLeft;
    bool isUndecided = false;
};

/// Whether a reading is a text without match parts; the common case, which needs no search.
bool isText(const QString& reading, const AcceptedText& accepted, const CharacterRules& characters)
{
    const QString text = accepted.text();
    return std::equal(reading.begin(), reading.end(), text.begin(), text.end(),
        [&characters](QChar read, QChar expected) { return characters.isSame(read, expected); });
}

} // namespace

MatchPattern::Outcome matchText(const QString& reading, const AcceptedText& accepted,
    const std::vector<MatchPattern>& patterns, const CharacterRules& characters, int* triesLeft)
{
    if (patterns.empty()) {
        return isText(reading, accepted, characters) ? Outcome::fits : Outcome::differs;
    }
    if (reading.size() > MatchPattern::longestText) {
        return Outcome::undecided;
    }
    return TextMatcher(reading, accepted, patterns, characters, triesLeft).run();
}

} // namespace scribo::line
