#include "rules/daterule.h"

#include <QStringList>

#include <algorithm>

namespace scribo::line {

namespace {

constexpr int firstYear = 1900;
constexpr int lastYear = 2999;
constexpr int noon = 12;
constexpr int daysInWeek = 7;
constexpr int monthsInQuarter = 3;

const DateToken tokens[] = {
    {"yyyy", PartKind::year, DateValue::year, 4, 0, 0, -1},
    {"yyy", PartKind::year, DateValue::year, 3, 0, 0, -1},
    {"yy", PartKind::year, DateValue::year, 2, 100, 0, -1},
    {"y", PartKind::year, DateValue::year, 1, 10, 0, -1},
    {"GGGG", PartKind::year, DateValue::isoYear, 4, 0, 0, -1},
    {"GG", PartKind::year, DateValue::isoYear, 2, 100, 0, -1},
    {"G", PartKind::year, DateValue::isoYear, 1, 10, 0, -1},
    {"MMMM", PartKind::month, DateValue::monthName, 0, 0, 0, -1},
    {"MMM", PartKind::month, DateValue::shortMonthName, 0, 0, 0, -1},
    {"MM", PartKind::month, DateValue::month, 2, 0, 1, 12},
    {"M", PartKind::month, DateValue::month, 1, 0, 1, 12},
    {"dd", PartKind::day, DateValue::day, 2, 0, 1, 31},
    {"d", PartKind::day, DateValue::day, 1, 0, 1, 31},
    {"DDD", PartKind::dayOfYear, DateValue::dayOfYear, 3, 0, 1, 366},
    {"ww", PartKind::week, DateValue::isoWeek, 2, 0, 1, 53},
    {"w", PartKind::week, DateValue::isoWeek, 1, 0, 1, 53},
    {"e", PartKind::weekday, DateValue::weekday, 1, 0, 1, 7},
    {"q", PartKind::quarter, DateValue::quarter, 1, 0, 1, 4},
    {"HH", PartKind::hour, DateValue::hour, 2, 0, 0, 23},
    {"H", PartKind::hour, DateValue::hour, 1, 0, 0, 23},
    {"hh", PartKind::hour, DateValue::hour12, 2, 0, 1, 12},
    {"h", PartKind::hour, DateValue::hour12, 1, 0, 1, 12},
    {"mm", PartKind::minute, DateValue::minute, 2, 0, 0, 59},
    {"ss", PartKind::second, DateValue::second, 2, 0, 0, 59},
    {"a", PartKind::dayHalf, DateValue::dayHalf, 0, 0, 0, -1},
};

QDate startOf(DateUnit unit, QDate date)
{
    switch (unit) {
    case DateUnit::day:
        return date;
    case DateUnit::week:
        return date.addDays(1 - date.dayOfWeek());
    case DateUnit::month:
        return {date.year(), date.month(), 1};
    case DateUnit::year:
        return {date.year(), 1, 1};
    }
    return date;
}

QDate added(DateUnit unit, int count, QDate date)
{
    switch (unit) {
    case DateUnit::day:
        return date.addDays(count);
    case DateUnit::week:
        return date.addDays(qint64{daysInWeek} * count);
    case DateUnit::month:
        return date.addMonths(count);
    case DateUnit::year:
        return date.addYears(count);
    }
    return date;
}

/// The ISO week, and its year.
struct IsoWeek
{
    int week = 0;
    int year = 0;
};

IsoWeek isoWeek(QDate date)
{
    IsoWeek result;
    result.week = date.weekNumber(&result.year);
    return result;
}

int hour12(QTime time)
{
    return (time.hour() + noon - 1) % noon + 1;
}

/// The number behind a token without names.
int number(const DateToken& token, QDate date, QTime time, int yearOffset)
{
    switch (token.value) {
    case DateValue::year:
        return date.year() + yearOffset;
    case DateValue::isoYear:
        return isoWeek(date).year + yearOffset;
    case DateValue::month:
        return date.month();
    case DateValue::day:
        return date.day();
    case DateValue::dayOfYear:
        return date.dayOfYear();
    case DateValue::isoWeek:
        return isoWeek(date).week;
    case DateValue::weekday:
        return date.dayOfWeek();
    case DateValue::quarter:
        return (date.month() - 1) / monthsInQuarter + 1;
    case DateValue::hour:
        return time.hour();
    case DateValue::hour12:
        return hour12(time);
    case DateValue::minute:
        return time.minute();
    case DateValue::second:
        return time.second();
    case DateValue::monthName:
    case DateValue::shortMonthName:
    case DateValue::dayHalf:
        break;
    }
    return 0;
}

QString withCase(const QString& text, LetterCase letterCase)
{
    switch (letterCase) {
    case LetterCase::upper:
        return text.toUpper();
    case LetterCase::lower:
        return text.toLower();
    case LetterCase::asWritten:
        break;
    }
    return text;
}

QStringList missingEntries(const LetterTable& table, const DateToken& token)
{
    QStringList missing;
    for (int value = token.first; value <= token.last; ++value) {
        if (!table.contains(value)) {
            missing.append(QString::number(value));
        }
    }
    return missing;
}

QString noTable(const QString& name)
{
    return QStringLiteral("there is no table \"%1\"").arg(name);
}

Result<QString> numberText(const DateRule& rule, const DateToken& token, int value, const TextSettings& settings)
{
    const int shown = token.modulo == 0 ? value : value % token.modulo;
    const auto name = rule.tables.constFind(token.part);
    if (name == rule.tables.constEnd()) {
        return QStringLiteral("%1").arg(shown, token.digits, 10, QLatin1Char('0'));
    }
    const auto table = settings.tables.constFind(*name);
    if (table == settings.tables.constEnd()) {
        return failure(noTable(*name).toStdString());
    }
    const auto entry = table->constFind(shown);
    if (entry == table->constEnd()) {
        return failure(QStringLiteral("table \"%1\" has no entry for %2 %3")
                           .arg(*name, partName(token.part))
                           .arg(shown)
                           .toStdString());
    }
    return *entry;
}

Result<QString> tokenText(
    const DateRule& rule, const DateToken& token, QDate date, QTime time, const TextSettings& settings)
{
    switch (token.value) {
    case DateValue::monthName:
        return withCase(monthName(rule.language, date.month()), rule.letterCase);
    case DateValue::shortMonthName:
        return withCase(shortMonthName(rule.language, date.month()), rule.letterCase);
    case DateValue::dayHalf:
        return withCase(time.hour() < noon ? QStringLiteral("AM") : QStringLiteral("PM"), rule.letterCase);
    default:
        return numberText(rule, token, number(token, date, time, rule.yearOffset), settings);
    }
}

} // namespace

const DateToken* dateToken(const QString& spelling)
{
    const auto* found = std::find_if(std::begin(tokens), std::end(tokens),
        [&spelling](const DateToken& token) { return spelling == QLatin1String(token.spelling); });
    return found == std::end(tokens) ? nullptr : found;
}

QDate stepped(QDate date, const std::vector<DateStep>& steps)
{
    for (const DateStep& step : steps) {
        switch (step.kind) {
        case DateStep::Kind::add:
            date = added(step.unit, step.count, date);
            break;
        case DateStep::Kind::start:
            date = startOf(step.unit, date);
            break;
        case DateStep::Kind::end:
            date = added(step.unit, 1, startOf(step.unit, date)).addDays(-1);
            break;
        }
    }
    return date;
}

bool DateRule::shows(DateValue value) const
{
    return std::any_of(elements.begin(), elements.end(),
        [value](const DateElement& element) { return element.token != nullptr && element.token->value == value; });
}

QStringList DateRule::faults(const TextSettings& settings) const
{
    QStringList faults;
    for (const DateElement& element : elements) {
        if (element.token == nullptr || !tables.contains(element.token->part)) {
            continue;
        }
        const QString name = tables[element.token->part];
        if (!settings.tables.contains(name)) {
            faults.append(noTable(name));
            continue;
        }
        const QStringList missing = missingEntries(settings.tables[name], *element.token);
        if (!missing.isEmpty()) {
            faults.append(QStringLiteral("table \"%1\" has no entry for %2 %3")
                              .arg(name, partName(element.token->part), missing.join(QStringLiteral(", "))));
        }
    }
    return faults;
}

Result<void> DateRule::expand(
    const LocalMoment& moment, const TextSettings& settings, std::vector<TextPart>* parts) const
{
    const QDate date = stepped(moment.day(dayBegin.value_or(settings.dayBegin)), steps);
    if (!date.isValid() || date.year() < firstYear || date.year() > lastYear) {
        return failure(
            QStringLiteral("the date is beyond the years %1 to %2").arg(firstYear).arg(lastYear).toStdString());
    }
    for (const DateElement& element : elements) {
        if (element.token == nullptr) {
            parts->push_back({PartKind::text, element.text, -1});
            continue;
        }
        auto text = tokenText(*this, *element.token, date, moment.time(), settings);
        if (!text) {
            return tl::make_unexpected(text.error());
        }
        parts->push_back({element.token->part, *text, -1});
    }
    return {};
}

} // namespace scribo::line
