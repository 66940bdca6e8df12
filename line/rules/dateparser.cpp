#include "rules/dateparser.h"

#include "rules/dateformatreader.h"
#include "rules/dateoptionreader.h"
#include "rules/templatepiece.h"

#include <algorithm>

namespace scribo::line {

namespace {

const QChar quote = QLatin1Char('\'');

/// The pieces between semicolons that are not quoted.
std::vector<TemplatePiece> pieces(const QString& body, int index)
{
    std::vector<TemplatePiece> result{{QString(), index}};
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
    std::vector<TemplatePiece> parts = pieces(body, index);
    const TemplatePiece format = parts.front();
    parts.erase(parts.begin());
    const Result<void> done
        = readDateFormat(format, &rule).and_then([&] { return readDateOptions(parts, &rule); }).and_then([&] {
              return checkMeaning(rule, index);
          });
    if (!done) {
        return tl::make_unexpected(done.error());
    }
    return rule;
}

} // namespace scribo::line
