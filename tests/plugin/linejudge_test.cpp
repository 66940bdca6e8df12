#include "linejudge.h"

#include "pluginsettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Judge : public testing::Test
{
protected:
    enum Mode { Off, Fixed, Automatic };

    void setMode(Mode mode)
    {
        for (int i = 0; i < 3; ++i) {
            settings.compareMode[i] = i == mode;
        }
    }

    bool judge(const std::vector<std::string>& texts, const QRectF& region = QRectF(0, 0, 100, 30))
    {
        std::vector<SOrgAI_ResInfo> lines;
        for (const std::string& text : texts) {
            SOrgAI_ResInfo line;
            line.text = text;
            line.rect = cv::Rect(0, 0, 100, 30);
            lines.push_back(line);
        }
        judged.clear();
        mismatches.clear();
        return LineJudge(settings, groups, ignored).judge(lines, region, &judged, &mismatches);
    }

    bool judge(const char* text) { return judge(std::vector<std::string>{text}); }

    PluginSettings settings;
    QStringList groups;
    QString ignored;
    QList<SOrgAI_ResInfo> judged;
    QList<int> mismatches;
};

} // namespace

TEST_F(Judge, TakesEveryTextWhenComparisonIsOff)
{
    settings.referenceText = "XYZ";
    settings.charCountLow = 10;
    EXPECT_TRUE(judge("A1"));
    EXPECT_TRUE(judge(""));
    EXPECT_EQ(settings.charCount, 0);
    EXPECT_TRUE(judge("A1"));
    EXPECT_EQ(settings.charCount, 2);
    EXPECT_EQ(settings.recognisedText, "A1");
    EXPECT_EQ(settings.referenceText, "XYZ");
}

TEST_F(Judge, TakesLookAlikesForOneAnother)
{
    setMode(Fixed);
    settings.referenceText = "A1";
    groups = QStringList{"0O", "1Il"};
    EXPECT_TRUE(judge("A1"));
    EXPECT_TRUE(judge("AI"));
    EXPECT_TRUE(judge("Al"));
    EXPECT_FALSE(judge("A2"));
    EXPECT_THAT(mismatches, IsEmpty()) << "a text of the right length marks no position";
    EXPECT_FALSE(judge("a1")) << "case counts";
}

TEST_F(Judge, MarksWhereALongerTextDiffers)
{
    setMode(Fixed);
    settings.referenceText = "AB12";
    EXPECT_FALSE(judge("AB123"));
    EXPECT_THAT(mismatches, ElementsAre(4));
    EXPECT_FALSE(judge("AX129"));
    EXPECT_THAT(mismatches, ElementsAre(1, 4));
    EXPECT_FALSE(judge("B12"));
    EXPECT_THAT(mismatches, ElementsAre(0, 1, 2));
    EXPECT_FALSE(judge("AB1"));
    EXPECT_THAT(mismatches, IsEmpty());
    EXPECT_FALSE(judge(""));
    EXPECT_THAT(mismatches, IsEmpty());
}

TEST_F(Judge, MarksLookAlikesToo)
{
    // Positions are compared character by character, groups or not.
    setMode(Fixed);
    settings.referenceText = "O1";
    groups = QStringList{"0O"};
    EXPECT_FALSE(judge("011"));
    EXPECT_THAT(mismatches, ElementsAre(0, 2));
}

TEST_F(Judge, AsksForAPatternForEveryGroupOfACharacter)
{
    setMode(Fixed);
    settings.referenceText = "O";
    groups = QStringList{"0O", "OQ"};
    EXPECT_FALSE(judge("O")) << "two patterns for one character";
    EXPECT_THAT(mismatches, IsEmpty());
    EXPECT_TRUE(judge("0Q"));
    EXPECT_FALSE(judge("Q0"));
}

TEST_F(Judge, ComparesAnEmptyReference)
{
    setMode(Fixed);
    EXPECT_TRUE(judge(""));
    EXPECT_FALSE(judge("A"));
    EXPECT_THAT(mismatches, ElementsAre(0));
}

TEST_F(Judge, DropsIgnoredCharactersFirst)
{
    setMode(Fixed);
    settings.referenceText = "A1";
    settings.charCountHigh = 2;
    ignored = "-.";
    EXPECT_TRUE(judge("-A.1-"));
    EXPECT_EQ(settings.recognisedText, "-A.1-");
    EXPECT_EQ(settings.charCount, 2);
    ASSERT_EQ(judged.size(), 1);
    EXPECT_EQ(judged[0].text, "-A.1-");
}

TEST_F(Judge, HoldsTheCountToItsLimits)
{
    setMode(Fixed);
    settings.referenceText = "ABC";
    settings.charCountLow = 3;
    settings.charCountHigh = 3;
    EXPECT_TRUE(judge("ABC"));
    settings.charCountLow = 4;
    settings.charCountHigh = 9;
    EXPECT_FALSE(judge("ABC"));
    EXPECT_THAT(mismatches, IsEmpty());
    settings.charCountLow = 0;
    settings.charCountHigh = 2;
    EXPECT_FALSE(judge("ABC"));
}

TEST_F(Judge, LearnsFromFiveIdenticalReadings)
{
    setMode(Automatic);
    EXPECT_FALSE(judge("A1")) << "the first becomes the reference";
    EXPECT_EQ(settings.referenceText, "A1");
    EXPECT_EQ(settings.autoUpdateHits, 0);
    for (int hits = 1; hits <= 5; ++hits) {
        EXPECT_FALSE(judge("A1")) << hits;
        EXPECT_EQ(settings.autoUpdateHits, hits);
    }
    EXPECT_TRUE(judge("A1"));
    EXPECT_FALSE(judge("B1"));
    EXPECT_EQ(settings.referenceText, "A1") << "what has been learned stays";
    EXPECT_TRUE(judge("A1"));
    EXPECT_EQ(settings.autoUpdateHits, 5);
}

TEST_F(Judge, StartsOverWhenALearnedReadingDiffers)
{
    setMode(Automatic);
    for (const char* text : {"A1", "A1", "A1", "A1", "A1"}) {
        EXPECT_FALSE(judge(text));
    }
    EXPECT_EQ(settings.autoUpdateHits, 4);
    EXPECT_FALSE(judge("B1"));
    EXPECT_EQ(settings.referenceText, "B1");
    EXPECT_EQ(settings.autoUpdateHits, 0);
}

TEST_F(Judge, LearnsWhatIsLeftWithoutIgnoredCharacters)
{
    setMode(Automatic);
    ignored = "-";
    EXPECT_FALSE(judge("A-1"));
    EXPECT_EQ(settings.referenceText, "A1");
    EXPECT_FALSE(judge("A1-"));
    EXPECT_EQ(settings.autoUpdateHits, 1);
}

TEST_F(Judge, DoesNotCheckTheCountWhileLearning)
{
    setMode(Automatic);
    settings.charCountLow = 50;
    EXPECT_FALSE(judge("A1"));
    EXPECT_THAT(mismatches, IsEmpty());
}

TEST_F(Judge, LearnsEmptyReadings)
{
    setMode(Automatic);
    for (int hits = 1; hits <= 5; ++hits) {
        EXPECT_FALSE(judge("")) << hits;
    }
    EXPECT_TRUE(judge("")) << "the reference was empty from the start";
}

TEST_F(Judge, GivesTheVerdictOfTheLastLine)
{
    setMode(Fixed);
    settings.referenceText = "A1";
    EXPECT_TRUE(judge(std::vector<std::string>{"B1", "A1"}));
    ASSERT_EQ(judged.size(), 2);
    EXPECT_FALSE(judged[0].isOk);
    EXPECT_TRUE(judged[1].isOk);
    EXPECT_FALSE(judge(std::vector<std::string>{"A1", "B1"}));
    EXPECT_EQ(settings.recognisedText, "B1");
    EXPECT_TRUE(judge(std::vector<std::string>{}));
    EXPECT_THAT(judged, IsEmpty());
}

TEST_F(Judge, MovesBoxesIntoThePicture)
{
    SOrgAI_ResInfo line;
    line.rect = cv::Rect(3, 4, 0, 0);
    LineJudge judge(settings, {}, {});
    judge.judge({line}, QRectF(10.75, 20.25, 55.5, 33.9), &judged, &mismatches);
    EXPECT_EQ(judged[0].rect, cv::Rect(13, 24, 55, 33));
    line.rect = cv::Rect(0, 0, 7, 8);
    judge.judge({line}, QRectF(10, 20, 55, 33), &judged, &mismatches);
    EXPECT_EQ(judged[1].rect, cv::Rect(10, 20, 7, 8));
}

TEST_F(Judge, CountsUtf16Units)
{
    setMode(Fixed);
    settings.referenceText = QStringLiteral("批号");
    EXPECT_TRUE(judge(u8"批号"));
    EXPECT_EQ(settings.charCount, 2);
    EXPECT_FALSE(judge(u8"批\U0001F600"));
    EXPECT_EQ(settings.charCount, 3);
    EXPECT_THAT(mismatches, ElementsAre(1, 2));
}
