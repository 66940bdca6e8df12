#include "rules/dateparser.h"

#include "rules/templatefault.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace scribo::line {

namespace {

constexpr int longestOffset = 9999;
constexpr int buddhistOffset = 543;
constexpr int minguoOffset = -1911;
const QChar quote = QLatin1Char('\'');
const QString twoQuotes = QStringLiteral("''");

/// A piece of the body and where it begins in the template.
struct Piece
{
    QString text;
    int index = 0;
};

/// The pieces between semicolons that are not quoted.
std::vector<Piece> pieces(const QString& body, int index)
{
    std::vector<Piece> result{{QString(), index}};
    bool isQuoted = false;
    for (int i = 0; i < body.size(); ++i) {
        isQuoted = isQuoted != (body[i] == quote);
        if (body[i] == QLatin1Char(';') && !isQuoted) {
            result.push_back({QString(), index + i + 1});
        } else {
            result.back().text += body[i];
        }
    }
    return result;
}

/// Without the spaces round it.
Piece trimmed(const Piece& piece)
{
    const auto first = std::find_if(piece.text.begin(), piece.text.end(), [](QChar c) { return !c.isSpace(); });
    return {piece.text.trimmed(), piece.index + static_cast<int>(first - piece.text.begin())};
}

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

/// Reads the format, the first piece.
class FormatReader
{
public:
    FormatReader(const Piece& piece, DateRule* rule)
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

std::optional<DateUnit> unitOf(const QString& word)
{
    struct Word
    {
        const char* one;
        const char* many;
        DateUnit unit;
    };
    static const std::array<Word, 4> words{{{"day", "days", DateUnit::day}, {"week", "weeks", DateUnit::week},
        {"month", "months", DateUnit::month}, {"year", "years", DateUnit::year}}};
    const auto* found = std::find_if(words.begin(), words.end(),
        [&word](const Word& entry) { return word == QLatin1String(entry.one) || word == QLatin1String(entry.many); });
    return found == words.end() ? std::nullopt : std::optional(found->unit);
}

/// Reads the options, the pieces after the format.
class OptionReader
{
public:
    explicit OptionReader(DateRule* rule)
        : rule(rule)
    {
    }

    Result<void> read(const Piece& option)
    {
        const QString& text = option.text;
        if (text.startsWith(QLatin1Char('+')) || text.startsWith(QLatin1Char('-'))) {
            return readOffset(option);
        }
        if (text.startsWith(QLatin1String("end of ")) || text.startsWith(QLatin1String("start of "))) {
            return readEdge(option);
        }
        if (text.startsWith(dayBegins)) {
            return readDayBegin(option);
        }
        if (text == QLatin1String("upper") || text == QLatin1String("lower")) {
            return readCase(option);
        }
        if (text.contains(QLatin1Char('='))) {
            return readSetting(option);
        }
        return templateFault(option.index,
            QStringLiteral("\"%1\" is no option of a date; expected one like +18 months, end of month, lang=de, upper, "
                           "month=TABLE, day begins at 06:00 or calendar=buddhist")
                .arg(text));
    }

private:
    Result<void> readOffset(const Piece& option)
    {
        const QString& text = option.text;
        int digits = 1;
        while (digits < text.size() && text[digits] >= QLatin1Char('0') && text[digits] <= QLatin1Char('9')) {
            ++digits;
        }
        bool isNumber = false;
        const int count = text.mid(1, digits - 1).toInt(&isNumber);
        const auto unit = unitOf(text.mid(digits).trimmed());
        if (!isNumber || !unit) {
            return templateFault(option.index,
                QStringLiteral("\"%1\" is no offset; expected one like +18 months or -1 day, in days, weeks, months or "
                               "years")
                    .arg(text));
        }
        if (count > longestOffset) {
            return templateFault(option.index, QStringLiteral("the offset is larger than %1").arg(longestOffset));
        }
        rule->steps.push_back({DateStep::Kind::add, *unit, text[0] == QLatin1Char('-') ? -count : count});
        return {};
    }

    Result<void> readEdge(const Piece& option)
    {
        const auto unit = unitOf(option.text.mid(option.text.lastIndexOf(QLatin1Char(' ')) + 1));
        const int words = option.text.count(QLatin1Char(' ')) + 1;
        if (!unit || unit == DateUnit::day || words != 3 || option.text.endsWith(QLatin1Char('s'))) {
            return templateFault(option.index,
                QStringLiteral("\"%1\": expected end of (or start of) week, month or year").arg(option.text));
        }
        const bool isEnd = option.text.startsWith(QLatin1Char('e'));
        rule->steps.push_back({isEnd ? DateStep::Kind::end : DateStep::Kind::start, *unit, 0});
        return {};
    }

    Result<void> readDayBegin(const Piece& option)
    {
        const QTime time = QTime::fromString(option.text.mid(dayBegins.size()), QStringLiteral("HH:mm"));
        if (!time.isValid()) {
            return templateFault(
                option.index, QStringLiteral("\"%1\": expected a time, as in day begins at 06:00").arg(option.text));
        }
        if (rule->dayBegin) {
            return twice(option);
        }
        rule->dayBegin = time;
        return {};
    }

    Result<void> readCase(const Piece& option)
    {
        if (rule->letterCase != LetterCase::asWritten) {
            return templateFault(option.index, QStringLiteral("upper or lower can stand only once"));
        }
        if (!showsNames() && !rule->shows(DateValue::dayHalf)) {
            return templateFault(
                option.index, QStringLiteral("%1 changes nothing here: the date shows no name").arg(option.text));
        }
        rule->letterCase = option.text == QLatin1String("upper") ? LetterCase::upper : LetterCase::lower;
        return {};
    }

    Result<void> readSetting(const Piece& option)
    {
        const int sign = option.text.indexOf(QLatin1Char('='));
        const QString key = option.text.left(sign).trimmed();
        const QString value = option.text.mid(sign + 1).trimmed();
        if (value.isEmpty()) {
            return templateFault(option.index, QStringLiteral("nothing follows \"%1=\"").arg(key));
        }
        if (key == QLatin1String("lang")) {
            return readLanguage(option, value);
        }
        if (key == QLatin1String("calendar")) {
            return readCalendar(option, value);
        }
        return readTable(option, key, value);
    }

    Result<void> readLanguage(const Piece& option, const QString& code)
    {
        const auto language = languageOf(code);
        if (!language) {
            return templateFault(
                option.index, QStringLiteral("the language \"%1\" is unknown; expected en, de or zh").arg(code));
        }
        if (!showsNames()) {
            return templateFault(option.index,
                QStringLiteral("lang changes nothing here: the date shows no name of a month (MMM or MMMM)"));
        }
        if (hasLanguage) {
            return twice(option);
        }
        hasLanguage = true;
        rule->language = *language;
        return {};
    }

    Result<void> readCalendar(const Piece& option, const QString& calendar)
    {
        const bool isMinguo = calendar == QLatin1String("minguo");
        if (!isMinguo && calendar != QLatin1String("buddhist")) {
            return templateFault(option.index,
                QStringLiteral("the calendar \"%1\" is unknown; expected buddhist or minguo").arg(calendar));
        }
        if (!showsPart(PartKind::year)) {
            return templateFault(option.index, QStringLiteral("calendar changes nothing here: the date shows no year"));
        }
        if (rule->yearOffset != 0) {
            return twice(option);
        }
        rule->yearOffset = isMinguo ? minguoOffset : buddhistOffset;
        return {};
    }

    Result<void> readTable(const Piece& option, const QString& key, const QString& table)
    {
        struct Key
        {
            const char* key;
            PartKind part;
        };
        static const Key keys[]
            = {{"year", PartKind::year}, {"month", PartKind::month}, {"day", PartKind::day}, {"week", PartKind::week},
                {"weekday", PartKind::weekday}, {"dayofyear", PartKind::dayOfYear}, {"quarter", PartKind::quarter},
                {"hour", PartKind::hour}, {"minute", PartKind::minute}, {"second", PartKind::second}};
        const auto* found = std::find_if(
            std::begin(keys), std::end(keys), [&key](const Key& entry) { return key == QLatin1String(entry.key); });
        if (found == std::end(keys)) {
            return templateFault(option.index,
                QStringLiteral(
                    "\"%1\" is unknown; expected lang, calendar, or what a table replaces: year, month, day, "
                    "week, weekday, dayofyear, quarter, hour, minute or second")
                    .arg(key));
        }
        if (!showsPart(found->part) || (found->part == PartKind::month && showsNames())) {
            return templateFault(option.index,
                QStringLiteral("%1= changes nothing here: the date shows no number of the %2")
                    .arg(key, partName(found->part)));
        }
        if (rule->tables.contains(found->part)) {
            return twice(option);
        }
        rule->tables[found->part] = table;
        return {};
    }

    static Result<void> twice(const Piece& option)
    {
        return templateFault(option.index, QStringLiteral("\"%1\": this option can stand only once").arg(option.text));
    }

    bool showsNames() const { return rule->shows(DateValue::monthName) || rule->shows(DateValue::shortMonthName); }

    bool showsPart(PartKind part) const
    {
        return std::any_of(rule->elements.begin(), rule->elements.end(),
            [part](const DateElement& element) { return element.token != nullptr && element.token->part == part; });
    }

    const QString dayBegins = QStringLiteral("day begins at ");
    DateRule* rule;
    bool hasLanguage = false;
};

/// Formats that can hardly be meant: they would ask for the wrong text on every item.
Result<void> checkMeaning(const DateRule& rule, int index)
{
    const bool hasHour12 = rule.shows(DateValue::hour12);
    const bool hasHour = rule.shows(DateValue::hour) || hasHour12;
    if (rule.shows(DateValue::minute) && !hasHour) {
        return templateFault(index, QStringLiteral("mm is the minute, and there is no hour; write MM for the month"));
    }
    if (rule.shows(DateValue::second) && !rule.shows(DateValue::minute)) {
        return templateFault(index, QStringLiteral("ss is the second, and there is no minute (mm)"));
    }
    if (hasHour12 != rule.shows(DateValue::dayHalf)) {
        return templateFault(index,
            hasHour12 ? QStringLiteral("h and hh count to 12 and need a for AM or PM; write H or HH to count to 24")
                      : QStringLiteral("a is AM or PM and needs h or hh"));
    }
    const bool isMinguo = rule.yearOffset == minguoOffset;
    const bool hasThreeDigits = std::any_of(rule.elements.begin(), rule.elements.end(), [](const DateElement& element) {
        return element.token != nullptr && element.token->digits == 3 && element.token->part == PartKind::year;
    });
    if (hasThreeDigits && !isMinguo) {
        return templateFault(index, QStringLiteral("yyy is for calendar=minguo only; write yyyy, yy or y"));
    }
    const bool hasFourDigits = std::any_of(rule.elements.begin(), rule.elements.end(),
        [](const DateElement& element) { return element.token != nullptr && element.token->digits == 4; });
    if (hasFourDigits && isMinguo) {
        return templateFault(index, QStringLiteral("years of the calendar minguo have three digits; write yyy"));
    }
    return {};
}

} // namespace

Result<DateRule> parseDate(const QString& body, int index)
{
    DateRule rule;
    const std::vector<Piece> parts = pieces(body, index);
    Result<void> done = FormatReader(parts.front(), &rule).read();
    OptionReader options(&rule);
    for (auto part = parts.begin() + 1; done && part != parts.end(); ++part) {
        done = options.read(trimmed(*part));
    }
    if (done) {
        done = checkMeaning(rule, index);
    }
    if (!done) {
        return tl::make_unexpected(done.error());
    }
    return rule;
}

} // namespace scribo::line
