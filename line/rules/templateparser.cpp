#include "rules/templateparser.h"

#include "rules/dateparser.h"
#include "rules/templatepiece.h"

#include <algorithm>

namespace scribo::line {

namespace {

constexpr int longestTemplate = 1000;
constexpr int mostPatterns = 8;
constexpr int mostCounterDigits = 18;
const QChar openBrace = QLatin1Char('{');
const QChar closeBrace = QLatin1Char('}');

/// Where the token that begins before `at` has its closing brace; -1: nowhere. Quoted braces do not count.
int endOfToken(const QString& text, int at)
{
    bool isQuoted = false;
    for (; at < text.size(); ++at) {
        isQuoted = isQuoted != (text[at] == QLatin1Char('\''));
        if (text[at] == closeBrace && !isQuoted) {
            return at;
        }
    }
    return -1;
}

/// Where a set of characters, [...], that begins at `at` ends; -1: nowhere.
int endOfSet(const QString& text, int at)
{
    ++at;
    if (at < text.size() && text[at] == QLatin1Char('^')) {
        ++at;
    }
    if (at < text.size() && text[at] == QLatin1Char(']')) {
        ++at; // as the first one it is a character of the set
    }
    for (; at < text.size(); ++at) {
        if (text[at] == QLatin1Char('\\')) {
            ++at;
        } else if (text.midRef(at, 2) == QLatin1String("[:")) {
            at = text.indexOf(QLatin1String(":]"), at + 2);
            if (at < 0) {
                return -1;
            }
            ++at;
        } else if (text[at] == QLatin1Char(']')) {
            return at;
        }
    }
    return -1;
}

/// Where a pattern that begins at `at` is followed by the closing brace of its token; -1: nowhere. Braces of the
/// pattern come in pairs, but for those after a backslash and in a set of characters.
int endOfPattern(const QString& text, int at)
{
    int depth = 0;
    for (; at < text.size(); ++at) {
        if (text[at] == QLatin1Char('\\')) {
            ++at;
        } else if (text[at] == QLatin1Char('[')) {
            at = endOfSet(text, at);
            if (at < 0) {
                return -1;
            }
        } else if (text[at] == openBrace) {
            ++depth;
        } else if (text[at] == closeBrace && depth-- == 0) {
            return at;
        }
    }
    return -1;
}

class TemplateReader
{
public:
    explicit TemplateReader(const QString& text)
        : text(text)
    {
    }

    Result<std::vector<TemplateElement>> read()
    {
        if (text.isEmpty()) {
            return failure("the template is empty");
        }
        if (text.size() > longestTemplate) {
            return failure(
                QStringLiteral("the template is longer than %1 characters").arg(longestTemplate).toStdString());
        }
        while (at < text.size()) {
            const Result<void> done = readElement();
            if (!done) {
                return tl::make_unexpected(done.error());
            }
        }
        return std::move(elements);
    }

private:
    Result<void> readElement()
    {
        const QChar character = text[at];
        if (character.category() == QChar::Other_Control) {
            return templateFault(at, QStringLiteral("there is a control character, which cannot be printed"));
        }
        if (character != openBrace && character != closeBrace) {
            append(character);
            ++at;
            return {};
        }
        if (at + 1 < text.size() && text[at + 1] == character) {
            append(character);
            at += 2;
            return {};
        }
        if (character == closeBrace) {
            return templateFault(at,
                QStringLiteral("\"}\" without \"{\" before it; write }} for a brace that is "
                               "printed"));
        }
        return readToken();
    }

    void append(QChar character)
    {
        if (elements.empty() || !std::holds_alternative<QString>(elements.back())) {
            elements.emplace_back(QString());
        }
        std::get<QString>(elements.back()) += character;
    }

    Result<void> readToken()
    {
        const int begin = at;
        int nameEnd = begin + 1;
        while (nameEnd < text.size() && text[nameEnd].isLetter()) {
            ++nameEnd;
        }
        const QString name = text.mid(begin + 1, nameEnd - begin - 1);
        const bool hasBody = nameEnd < text.size() && text[nameEnd] == QLatin1Char(':');
        const int bodyBegin = hasBody ? nameEnd + 1 : nameEnd;
        const int end = name == QLatin1String("match") ? endOfPattern(text, bodyBegin) : endOfToken(text, bodyBegin);
        if (end < 0) {
            return templateFault(
                begin, QStringLiteral("the \"{\" has no \"}\" to close it; write {{ for a brace that is printed"));
        }
        if (!hasBody && end != nameEnd) {
            return templateFault(nameEnd, QStringLiteral("expected \":\" or \"}\" after \"{%1\"").arg(name));
        }
        at = end + 1;
        return readField(name, text.mid(bodyBegin, end - bodyBegin), begin, bodyBegin, hasBody);
    }

    Result<void> readField(const QString& name, const QString& body, int begin, int bodyBegin, bool hasBody)
    {
        if (name == QLatin1String("date")) {
            auto rule = parseDate(body, bodyBegin);
            if (!rule) {
                return tl::make_unexpected(rule.error());
            }
            elements.emplace_back(*std::move(rule));
            return {};
        }
        if (name == QLatin1String("match")) {
            return readMatch(body, bodyBegin);
        }
        if (name == QLatin1String("counter")) {
            return readCounter(body, bodyBegin, hasBody);
        }
        const bool isLot = name == QLatin1String("lot");
        if (!isLot && name != QLatin1String("shift")) {
            return templateFault(
                begin + 1, QStringLiteral("\"%1\" is unknown; expected date, lot, counter, shift or match").arg(name));
        }
        if (hasBody) {
            return templateFault(bodyBegin - 1, QStringLiteral("expected \"}\": %1 has no options").arg(name));
        }
        if (isLot) {
            elements.emplace_back(LotField());
        } else {
            elements.emplace_back(ShiftField());
        }
        return {};
    }

    Result<void> readCounter(const QString& zeros, int index, bool hasBody)
    {
        const bool areZeros = std::all_of(zeros.begin(), zeros.end(), [](QChar c) { return c == QLatin1Char('0'); });
        if (hasBody && (zeros.isEmpty() || !areZeros)) {
            return templateFault(index, QStringLiteral("expected a zero for each digit, as in {counter:0000}"));
        }
        if (zeros.size() > mostCounterDigits) {
            return templateFault(index, QStringLiteral("a counter has at most %1 digits").arg(mostCounterDigits));
        }
        elements.emplace_back(CounterField{zeros.size()});
        return {};
    }

    Result<void> readMatch(const QString& pattern, int index)
    {
        const auto compiled = MatchPattern::create(pattern);
        if (!compiled) {
            return templateFault(index, QString::fromStdString(compiled.error().message));
        }
        // Where one of two neighbours ends and the other begins, nobody could say.
        if (!elements.empty() && std::holds_alternative<MatchPattern>(elements.back())) {
            return templateFault(index, QStringLiteral("two match parts stand side by side; write one for both"));
        }
        if (++patterns > mostPatterns) {
            return templateFault(index, QStringLiteral("there are more than %1 match parts").arg(mostPatterns));
        }
        elements.emplace_back(*compiled);
        return {};
    }

    const QString text;
    int at = 0;
    int patterns = 0;
    std::vector<TemplateElement> elements;
};

} // namespace

Result<std::vector<TemplateElement>> parseTemplate(const QString& text)
{
    return TemplateReader(text).read();
}

} // namespace scribo::line
