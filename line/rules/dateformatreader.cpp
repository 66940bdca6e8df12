#include "rules/dateformatreader.h"

#include <algorithm>

namespace scribo::line {

namespace {

const QChar quote = QLatin1Char('\'');
const QString twoQuotes = QStringLiteral("''");

bool isLetter(QChar character)
{
    return character.unicode() < 0x80 && character.isLetter();
}

/// What was probably meant by letters that are no token; empty: no idea.
QString hintFor(const QString& letters)
{
    struct Hint
    {
        const char* letters;
        const char* hint;
    };
    static const Hint hints[] = {
        {"Y", "write y, yy or yyyy for the year, or G, GG or GGGG for the year of the ISO week"},
        {"D", "write d or dd for the day of the month, or DDD for the day of the year"},
        {"d", "write d or dd for the day of the month, DDD for the day of the year, or e for the day of the week"},
        {"M", "write M or MM for the number of the month, MMM or MMMM for its name"},
        {"y", "write y, yy or yyyy"},
        {"G", "write G, GG or GGGG"},
        {"W", "write ww for the ISO week"},
        {"w", "write w or ww"},
        {"E", "write e for the number of the day of the week"},
        {"e", "write e, one digit"},
        {"H", "write H or HH"},
        {"h", "write h or hh"},
        {"m", "write mm for the minute, MM for the month"},
        {"s", "write ss"},
        {"S", "write ss for the second"},
        {"q", "write q, one digit"},
        {"Q", "write q for the quarter"},
        {"a", "write a for AM or PM"},
    };
    const auto* found = std::find_if(std::begin(hints), std::end(hints),
        [&letters](const Hint& hint) { return letters.startsWith(QLatin1String(hint.letters)); });
    const QString literal = QStringLiteral("text goes between single quotes, '%1'").arg(letters);
    return found == std::end(hints) ? literal : QString::fromLatin1(found->hint) + QStringLiteral("; ") + literal;
}

class FormatReader
{
public:
    FormatReader(const TemplatePiece& piece, DateRule* rule)
        : text(piece.text)
        , index(piece.index)
        , rule(rule)
    {
    }

    Result<void> read()
    {
        while (at < text.size()) {
            const Result<void> done = text[at] == quote ? readQuoted() : isLetter(text[at]) ? readToken() : readSign();
            if (!done) {
                return done;
            }
        }
        if (std::none_of(rule->elements.begin(), rule->elements.end(),
                [](const DateElement& element) { return element.token != nullptr; })) {
            return templateFault(index, QStringLiteral("the date has no format, expected one like dd.MM.yyyy"));
        }
        return {};
    }

private:
    void append(const QString& literal)
    {
        if (!rule->elements.empty() && rule->elements.back().token == nullptr) {
            rule->elements.back().text += literal;
        } else {
            rule->elements.push_back({nullptr, literal});
        }
    }

    /// Text between quotes. Two quotes side by side are one that is printed, between quotes and elsewhere.
    Result<void> readQuoted()
    {
        const int begin = at;
        if (text.midRef(begin, 2) == twoQuotes) {
            append(QString(quote));
            at += 2;
            return {};
        }
        for (++at; at < text.size(); ++at) {
            if (text[at] != quote) {
                append(QString(text[at]));
            } else if (text.midRef(at, 2) == twoQuotes) {
                append(QString(text[at++]));
            } else {
                ++at;
                return {};
            }
        }
        return templateFault(index + begin, QStringLiteral("the single quote is not closed"));
    }

    Result<void> readToken()
    {
        const int begin = at;
        while (at < text.size() && text[at] == text[begin]) {
            ++at;
        }
        const QString letters = text.mid(begin, at - begin);
        const DateToken* token = dateToken(letters);
        if (token == nullptr) {
            return templateFault(
                index + begin, QStringLiteral("\"%1\" is no part of a date; %2").arg(letters, hintFor(letters)));
        }
        rule->elements.push_back({token, QString()});
        return {};
    }

    Result<void> readSign()
    {
        if (text[at] == QLatin1Char('{')) {
            return templateFault(index + at, QStringLiteral("expected \"}\" before the next \"{\""));
        }
        append(QString(text[at]));
        ++at;
        return {};
    }

    const QString text;
    const int index;
    DateRule* rule;
    int at = 0;
};

} // namespace

Result<void> readDateFormat(const TemplatePiece& format, DateRule* rule)
{
    return FormatReader(format, rule).read();
}

} // namespace scribo::line
