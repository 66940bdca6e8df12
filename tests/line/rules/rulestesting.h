#pragma once

#include "rules/textsettings.h"
#include "rules/texttemplate.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QTimeZone>

#include <gtest/gtest.h>

namespace scribo::line::testing {

inline TextSettings inBerlin()
{
    TextSettings settings;
    settings.zone = QTimeZone("Europe/Berlin");
    return settings;
}

/// When the clock of a zone shows a time like 2026-11-21T12:00.
inline QDateTime localTime(const QString& text, const char* zone = "Europe/Berlin")
{
    const QDateTime read = QDateTime::fromString(text, Qt::ISODate);
    EXPECT_TRUE(read.isValid()) << text.toStdString();
    return QDateTime(read.date(), read.time(), QTimeZone(zone)).toUTC();
}

/// The accepted texts, or one text that begins with "failed: ".
inline QStringList expandedAll(
    const QString& text, const TextContext& context, const TextSettings& settings = inBerlin())
{
    const auto parsed = TextTemplate::parse(text);
    if (!parsed) {
        return {QStringLiteral("failed: ") + QString::fromStdString(parsed.error().message)};
    }
    const auto expectation = parsed->expand(context, settings);
    if (!expectation) {
        return {QStringLiteral("failed: ") + QString::fromStdString(expectation.error().message)};
    }
    QStringList texts;
    for (const AcceptedText& accepted : expectation->texts()) {
        texts.append(accepted.text());
    }
    return texts;
}

/// The text at a local time, when there is one only.
inline std::string expanded(const QString& text, const QString& at = QStringLiteral("2026-11-21T12:00"),
    const TextSettings& settings = inBerlin())
{
    const QStringList texts = expandedAll(text, {localTime(at), QString(), {}}, settings);
    EXPECT_EQ(texts.size(), 1);
    return texts.join(QStringLiteral(" or ")).toStdString();
}

} // namespace scribo::line::testing
