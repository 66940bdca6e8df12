#pragma once

#include <QString>

#include <optional>

namespace scribo::line {

/// Languages in which months have names here.
enum class Language { english, german, chinese };

/// The language of a code as in templates: "en", "de", "zh".
std::optional<Language> languageOf(const QString& code);

/// The name of a month, from 1: "November", "November", "十一月"; short: "Nov", "Nov", "11月".
QString monthName(Language language, int month);
QString shortMonthName(Language language, int month);

} // namespace scribo::line
