#include "linejudge.h"
#include "pluginsettings.h"
#include "rules/textcomparison.h"

#include <gtest/gtest.h>

#include <random>

namespace scribo::line {
namespace {

QString randomText(std::mt19937& random, int longest)
{
    const QString letters = QStringLiteral("01OIoAB-月");
    QString text;
    for (int i = static_cast<int>(random() % static_cast<unsigned>(longest + 1)); i > 0; --i) {
        text += letters[static_cast<int>(random() % static_cast<unsigned>(letters.size()))];
    }
    return text;
}

/// As the plug-in judges, which is given the reference without its ignored characters.
bool isOkForPlugin(const QString& reading, const QString& reference, const CharacterRules& characters)
{
    PluginSettings settings;
    settings.compareMode[0] = false;
    settings.compareMode[1] = true;
    settings.referenceText = characters.kept(reference);
    SOrgAI_ResInfo line;
    line.text = reading.toStdString();
    QList<SOrgAI_ResInfo> judged;
    QList<int> mismatches;
    return LineJudge(settings, characters.groups, characters.ignored)
        .judge({line}, QRectF(0, 0, 1, 1), &judged, &mismatches);
}

TEST(SameJudgement, IsThatOfThePluginForEveryTextAndReading)
{
    const CharacterRules characters{{QStringLiteral("0Oo"), QStringLiteral("1I")}, QStringLiteral("-")};
    std::mt19937 random(29);
    int ok = 0;
    int ng = 0;
    for (int i = 0; i < 50'000; ++i) {
        const QString reference = QLatin1Char('A') + randomText(random, 3);
        const QString reading = i % 2 == 0 ? QLatin1Char('A') + randomText(random, 3) : randomText(random, 4);
        const Expectation expected({AcceptedText{{{PartKind::text, reference, -1}}}}, {});
        const TextComparison comparison = compareText(reading, expected, characters);
        ASSERT_EQ(comparison.isOk(), isOkForPlugin(reading, reference, characters))
            << reading.toStdString() << " for " << reference.toStdString();
        ASSERT_EQ(comparison.isOk(), comparison.reason.isEmpty());
        ++(comparison.isOk() ? ok : ng);
    }
    EXPECT_GT(ok, 1000);
    EXPECT_GT(ng, 1000);
}

} // namespace
} // namespace scribo::line
