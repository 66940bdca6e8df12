#pragma once

#include "result.h"

#include <QRegularExpression>
#include <QString>

namespace scribo::line {

/// A pattern for a part that varies: a Perl-compatible regular expression that has to fit the whole part. It is
/// compiled once, and the work on one text is bounded. Copies share the compiled pattern; any thread may use it.
class MatchPattern
{
public:
    static constexpr int longestPattern = 256;
    static constexpr int longestText = 256;

    enum class Outcome {
        fits,
        differs,
        undecided, ///< the text or the work is beyond the bounds
    };

    /// Fails when `pattern` is no regular expression, or too long.
    static Result<MatchPattern> create(const QString& pattern);

    const QString& pattern() const { return source; }

    /// Whether all of `text` fits.
    Outcome match(const QString& text) const;

private:
    MatchPattern(const QString& source, const QRegularExpression& expression);

    QString source;
    QRegularExpression expression;
};

} // namespace scribo::line
