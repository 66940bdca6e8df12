#include "linejudge.h"

#include "pluginsettings.h"

#include <algorithm>
#include <utility>

namespace {

/// Moves the box of a line from its region into the picture; an extent of 0 becomes the region's.
cv::Rect boxInPicture(const cv::Rect& box, const QRectF& region)
{
    return {static_cast<int>(box.x + region.x()), static_cast<int>(box.y + region.y()),
        box.width == 0 ? static_cast<int>(region.width()) : box.width,
        box.height == 0 ? static_cast<int>(region.height()) : box.height};
}

} // namespace

LineJudge::LineJudge(PluginSettings& settings, QStringList characterGroups, QString ignoredCharacters)
    : settings(settings)
    , characterGroups(std::move(characterGroups))
    , ignoredCharacters(std::move(ignoredCharacters))
{
}

bool LineJudge::judge(const std::vector<SOrgAI_ResInfo>& lines, const QRectF& region, QList<SOrgAI_ResInfo>* judged,
    QList<int>* mismatches)
{
    const QStringList patterns = positionPatterns();
    bool verdict = true;
    for (SOrgAI_ResInfo line : lines) {
        verdict = judgeLine(line.text, patterns, mismatches);
        line.isOk = verdict;
        line.rect = boxInPicture(line.rect, region);
        judged->append(line);
    }
    return verdict;
}

/// For each character of the reference the characters that may stand in its place. A character that is in several
/// groups gives a pattern for each of them, so groups should have no character in common.
QStringList LineJudge::positionPatterns() const
{
    QStringList patterns;
    for (const QChar character : std::as_const(settings.referenceText)) {
        const int before = patterns.size();
        std::copy_if(characterGroups.begin(), characterGroups.end(), std::back_inserter(patterns),
            [character](const QString& group) { return group.contains(character); });
        if (patterns.size() == before) {
            patterns.append(QString(character));
        }
    }
    return patterns;
}

QString LineJudge::withoutIgnored(const QString& text) const
{
    QString kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
        [this](QChar character) { return !ignoredCharacters.contains(character); });
    return kept;
}

bool LineJudge::isLearning() const
{
    return settings.compareMode[2] && settings.autoUpdateHits < settings.autoUpdateNeeded;
}

void LineJudge::learn(const QString& text)
{
    if (text == settings.referenceText) {
        ++settings.autoUpdateHits;
    } else {
        settings.referenceText = text;
        settings.autoUpdateHits = 0;
    }
}

bool LineJudge::isComparing() const
{
    return settings.compareMode[1] || (settings.compareMode[2] && !isLearning());
}

bool LineJudge::judgeLine(const std::string& reading, const QStringList& patterns, QList<int>* mismatches)
{
    settings.recognisedText = QString::fromStdString(reading);
    const QString text = withoutIgnored(settings.recognisedText);

    bool verdict = true;
    if (isLearning()) {
        learn(text);
        verdict = false; // nothing is OK against a reference that is still being learned
    }
    settings.charCount = text.length();
    if (isComparing()) {
        verdict = matches(text, patterns, mismatches) && verdict;
        if (settings.charCount < settings.charCountLow || settings.charCount > settings.charCountHigh) {
            verdict = false;
        }
    }
    return verdict;
}

bool LineJudge::matches(const QString& text, const QStringList& patterns, QList<int>* mismatches) const
{
    if (text.length() == patterns.size()) {
        return std::equal(text.begin(), text.end(), patterns.begin(),
            [](QChar character, const QString& pattern) { return pattern.contains(character); });
    }

    const QString& reference = settings.referenceText;
    for (int i = 0; i < text.length(); ++i) {
        if (i >= reference.length() || reference[i] != text[i]) {
            mismatches->append(i);
        }
    }
    return false;
}
