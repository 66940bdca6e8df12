#include "rules/matchpattern.h"

namespace scribo::line {

namespace {

/// PCRE2 gives up after so many steps within one match. Patterns as one writes for a serial number take some dozens.
const QString bounds = QStringLiteral("(*LIMIT_MATCH=20000)(*LIMIT_DEPTH=2000)");

tl::unexpected<Error> badPattern(const QString& message)
{
    return failure(message.toStdString());
}

} // namespace

MatchPattern::MatchPattern(const QString& source, const QRegularExpression& expression)
    : source(source)
    , expression(expression)
{
}

Result<MatchPattern> MatchPattern::create(const QString& pattern)
{
    if (pattern.isEmpty()) {
        return badPattern(QStringLiteral("the pattern is empty"));
    }
    if (pattern.size() > longestPattern) {
        return badPattern(QStringLiteral("the pattern is longer than %1 characters").arg(longestPattern));
    }
    // On its own first: "a)|(b" is no pattern, but would be one within the brackets that follow.
    const QRegularExpression alone(pattern);
    if (!alone.isValid()) {
        return badPattern(QStringLiteral("the pattern is no regular expression: %1 at its character %2")
                              .arg(alone.errorString())
                              .arg(alone.patternErrorOffset()));
    }
    QRegularExpression whole(bounds + QRegularExpression::anchoredPattern(pattern));
    if (!whole.isValid()) {
        return badPattern(QStringLiteral("the pattern cannot stand as a part: %1").arg(whole.errorString()));
    }
    whole.optimize(); // here, so that no item waits for it
    return MatchPattern(pattern, whole);
}

MatchPattern::Outcome MatchPattern::match(const QString& text) const
{
    if (text.size() > longestText) {
        return Outcome::undecided;
    }
    const QRegularExpressionMatch result = expression.match(text);
    if (!result.isValid()) {
        return Outcome::undecided;
    }
    return result.hasMatch() ? Outcome::fits : Outcome::differs;
}

} // namespace scribo::line
