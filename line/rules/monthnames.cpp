#include "rules/monthnames.h"

#include <array>

namespace scribo::line {

namespace {

using Names = std::array<const char*, 12>;

// Our own, since those of Qt depend on what is installed.
constexpr Names english{"January", "February", "March", "April", "May", "June", "July", "August", "September",
    "October", "November", "December"};
constexpr Names german{"Januar", "Februar", "März", "April", "Mai", "Juni", "Juli", "August", "September", "Oktober",
    "November", "Dezember"};
constexpr Names chinese{
    "一月", "二月", "三月", "四月", "五月", "六月", "七月", "八月", "九月", "十月", "十一月", "十二月"};

constexpr int shortLength = 3;

} // namespace

std::optional<Language> languageOf(const QString& code)
{
    if (code == QLatin1String("en")) {
        return Language::english;
    }
    if (code == QLatin1String("de")) {
        return Language::german;
    }
    if (code == QLatin1String("zh")) {
        return Language::chinese;
    }
    return {};
}

QString monthName(Language language, int month)
{
    const Names& names = language == Language::english ? english : language == Language::german ? german : chinese;
    return QString::fromUtf8(names.at(static_cast<std::size_t>(month) - 1));
}

QString shortMonthName(Language language, int month)
{
    if (language == Language::chinese) {
        return QString::number(month) + QStringLiteral("月");
    }
    return monthName(language, month).left(shortLength);
}

} // namespace scribo::line
