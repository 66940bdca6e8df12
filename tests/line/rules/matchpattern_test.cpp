#include "rules/matchpattern.h"

#include <gtest/gtest.h>

namespace scribo::line {
namespace {

using Outcome = MatchPattern::Outcome;

Outcome match(const QString& pattern, const QString& text)
{
    const auto created = MatchPattern::create(pattern);
    EXPECT_TRUE(created) << created.error().message;
    return created->match(text);
}

TEST(MatchPattern, FitsTheWholePartOrNot)
{
    EXPECT_EQ(match(QStringLiteral("[A-Z]\\d{4}"), QStringLiteral("A4827")), Outcome::fits);
    EXPECT_EQ(match(QStringLiteral("[A-Z]\\d{4}"), QStringLiteral("A48270")), Outcome::differs);
    EXPECT_EQ(match(QStringLiteral("[A-Z]\\d{4}"), QStringLiteral("XA4827")), Outcome::differs);
    EXPECT_EQ(match(QStringLiteral("[A-Z]\\d{4}"), QStringLiteral("A4827\n")), Outcome::differs);
    EXPECT_EQ(match(QStringLiteral("a|ab"), QStringLiteral("ab")), Outcome::fits);
    EXPECT_EQ(match(QStringLiteral("a|ab"), QStringLiteral("abb")), Outcome::differs);
    EXPECT_EQ(match(QStringLiteral("\\d*"), QString()), Outcome::fits);
}

TEST(MatchPattern, TakesOnlyOurDigits)
{
    EXPECT_EQ(match(QStringLiteral("\\d"), QStringLiteral("٣")), Outcome::differs);
}

TEST(MatchPattern, GivesUpOnEndlessWork)
{
    EXPECT_EQ(match(QStringLiteral("(a+)+[bc]"), QString(200, QLatin1Char('a'))), Outcome::undecided);
    EXPECT_EQ(match(QStringLiteral("(x+x+)+[yz]"), QString(250, QLatin1Char('x'))), Outcome::undecided);
    EXPECT_EQ(match(QStringLiteral("(.*)*(.*)*(.*)*[^\\s\\S]"), QString(250, QLatin1Char('x'))), Outcome::undecided);
}

TEST(MatchPattern, GivesUpOnLongTexts)
{
    EXPECT_EQ(match(QStringLiteral("a*"), QString(256, QLatin1Char('a'))), Outcome::fits);
    EXPECT_EQ(match(QStringLiteral("a*"), QString(257, QLatin1Char('a'))), Outcome::undecided);
}

TEST(MatchPattern, DoesNotFitHalvesOfCharacters)
{
    EXPECT_EQ(match(QStringLiteral(".*"), QString(QChar(0xD800))), Outcome::undecided);
}

TEST(MatchPattern, KeepsItsSource)
{
    EXPECT_EQ(MatchPattern::create(QStringLiteral("a{2}"))->pattern(), QStringLiteral("a{2}"));
}

} // namespace
} // namespace scribo::line
