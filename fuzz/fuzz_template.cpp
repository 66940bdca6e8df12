// Templates of expected texts, readings, and settings: three lines of a file. Any bytes leave an answer within bounded
// time, and a text that is expected is right when it is read.

#include "rules/expectedtext.h"
#include "rules/textcomparison.h"

#include <QJsonDocument>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace scribo::line;

// Qt 5.15's own parser leaks a value when an object names the same key twice.
extern "C" const char* __asan_default_options()
{
    return "detect_leaks=0";
}

namespace {

TextSettings settingsOf(const QByteArray& json)
{
    const auto read = textSettings(QJsonDocument::fromJson(json).object());
    TextSettings settings = read ? *read : TextSettings();
    settings.zone = QTimeZone::utc();
    if (!read) {
        settings.grace = std::chrono::minutes(10);
        settings.shifts[QTime(6, 0)] = QStringLiteral("E");
        settings.tables[QStringLiteral("t")] = {{1, QStringLiteral("A")}, {11, QStringLiteral("K")}};
    }
    return settings;
}

void judge(const Expectation& expectation, const QString& reading)
{
    const CharacterRules characters{{QStringLiteral("0Oo"), QStringLiteral("1Il")}, QStringLiteral("~")};
    const TextComparison comparison = compareText(reading, expectation, characters);
    if (comparison.isOk() != comparison.reason.isEmpty()) {
        std::abort();
    }
    if (expectation.hasMatch()) {
        return;
    }
    for (const AcceptedText& accepted : {expectation.texts().front(), expectation.texts().back()}) {
        if (!compareText(accepted.text(), expectation, characters).isOk()) {
            std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QList<QByteArray> lines = bytes.split('\n');
    const auto parsed = TextTemplate::parse(QString::fromUtf8(lines[0]));
    if (!parsed) {
        return 0;
    }
    const QString reading = QString::fromUtf8(lines.value(1));
    const TextSettings settings = settingsOf(lines.value(2));
    parsed->faults(settings);
    const QDateTime now(QDate(2026, 11, 30), QTime(23, 55), Qt::UTC);
    const auto expectation = parsed->expand({now, QStringLiteral("A4828"), 27}, settings);
    if (expectation) {
        judge(*expectation, reading);
    }
    return 0;
}
