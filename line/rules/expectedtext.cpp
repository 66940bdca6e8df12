#include "rules/expectedtext.h"

#include <QStringList>

#include <utility>

namespace scribo::line {

ExpectedText::ExpectedText(TextTemplate rule, TextSettings settings)
    : rule(std::move(rule))
    , settings(std::move(settings))
{
}

Result<ExpectedText> ExpectedText::create(const QString& text, const TextSettings& settings)
{
    auto rule = TextTemplate::parse(text);
    if (!rule) {
        return tl::make_unexpected(rule.error());
    }
    const QStringList faults = rule->faults(settings);
    if (!faults.isEmpty()) {
        return failure(faults.join(QStringLiteral("; ")).toStdString());
    }
    return ExpectedText(*std::move(rule), settings);
}

} // namespace scribo::line
