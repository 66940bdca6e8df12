#include "rules/dateoptionreader.h"

#include <algorithm>
#include <array>

namespace scribo::line {

namespace {

constexpr int longestOffset = 9999;
constexpr int buddhistOffset = 543;

/// Without the spaces round it.
TemplatePiece trimmed(const TemplatePiece& piece)
{
    const auto first = std::find_if(piece.text.begin(), piece.text.end(), [](QChar c) { return !c.isSpace(); });
    return {piece.text.trimmed(), piece.index + static_cast<int>(first - piece.text.begin())};
}

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

class OptionReader
{
public:
    explicit OptionReader(DateRule* rule)
        : rule(rule)
    {
    }

    Result<void> read(const TemplatePiece& option)
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
    Result<void> readOffset(const TemplatePiece& option)
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

    Result<void> readEdge(const TemplatePiece& option)
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

    Result<void> readDayBegin(const TemplatePiece& option)
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

    Result<void> readCase(const TemplatePiece& option)
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

    Result<void> readSetting(const TemplatePiece& option)
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

    Result<void> readLanguage(const TemplatePiece& option, const QString& code)
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

    Result<void> readCalendar(const TemplatePiece& option, const QString& calendar)
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

    Result<void> readTable(const TemplatePiece& option, const QString& key, const QString& table)
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

    static Result<void> twice(const TemplatePiece& option)
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

} // namespace

Result<void> readDateOptions(const std::vector<TemplatePiece>& options, DateRule* rule)
{
    OptionReader reader(rule);
    for (const TemplatePiece& option : options) {
        Result<void> done = reader.read(trimmed(option));
        if (!done) {
            return done;
        }
    }
    return {};
}

} // namespace scribo::line
