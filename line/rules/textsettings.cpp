#include "rules/textsettings.h"

#include <QJsonArray>

namespace scribo::line {

namespace {

constexpr int mostEntries = 1000;
constexpr int longestEntry = 32;

tl::unexpected<Error> fault(const QString& message)
{
    return failure(message.toStdString());
}

Result<QTime> timeOfDay(const QString& text, const QString& what)
{
    const QTime time = QTime::fromString(text, QStringLiteral("HH:mm"));
    if (!time.isValid()) {
        return fault(QStringLiteral("%1 is \"%2\", expected a time like 06:00").arg(what, text));
    }
    return time;
}

/// The text of one entry of a table; `what` names the entry.
Result<QString> entryText(const QJsonValue& value, const QString& what)
{
    const QString text = value.toString();
    if (text.isEmpty() || text.size() > longestEntry) {
        return fault(QStringLiteral("%1 is not a text of 1 to %2 characters").arg(what).arg(longestEntry));
    }
    return text;
}

QString entryName(const QString& table, const QString& key)
{
    return QStringLiteral("table \"%1\", entry \"%2\"").arg(table, key);
}

Result<LetterTable> tableOfList(const QString& name, const QJsonArray& list)
{
    LetterTable table;
    for (int i = 0; i < list.size(); ++i) {
        const auto text = entryText(list[i], entryName(name, QString::number(i + 1)));
        if (!text) {
            return tl::make_unexpected(text.error());
        }
        table[i + 1] = *text;
    }
    return table;
}

Result<LetterTable> tableByNumber(const QString& name, const QJsonObject& object)
{
    LetterTable table;
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const QString what = entryName(name, entry.key());
        bool isNumber = false;
        const int number = entry.key().toInt(&isNumber);
        if (!isNumber || number < 0 || QString::number(number) != entry.key()) {
            return fault(QStringLiteral("%1: expected a number like 2026").arg(what));
        }
        const auto text = entryText(entry.value(), what);
        if (!text) {
            return tl::make_unexpected(text.error());
        }
        table[number] = *text;
    }
    return table;
}

Result<LetterTable> letterTable(const QString& name, const QJsonValue& value)
{
    QJsonArray list = value.toArray();
    if (value.isString()) {
        for (const QChar letter : value.toString()) {
            list.append(QString(letter));
        }
    }
    const QJsonObject object = value.toObject();
    const int size = list.size() + object.size();
    if (size == 0 || size > mostEntries) {
        return fault(
            QStringLiteral("table \"%1\": expected a text with one character for each number from 1, a list of "
                           "texts, or an object of texts by number, with 1 to %2 entries")
                .arg(name)
                .arg(mostEntries));
    }
    return object.isEmpty() ? tableOfList(name, list) : tableByNumber(name, object);
}

Result<void> readZone(const QJsonValue& value, TextSettings* settings)
{
    settings->zone = QTimeZone(value.toString().toUtf8());
    if (value.toString().isEmpty() || !settings->zone.isValid()) {
        return fault(
            QStringLiteral("timeZone: \"%1\" is unknown, expected one like Europe/Berlin").arg(value.toString()));
    }
    return {};
}

Result<void> readDayBegin(const QJsonValue& value, TextSettings* settings)
{
    const auto time = timeOfDay(value.toString(), QStringLiteral("dayBegins"));
    if (!time) {
        return tl::make_unexpected(time.error());
    }
    settings->dayBegin = *time;
    return {};
}

Result<void> readGrace(const QJsonValue& value, TextSettings* settings)
{
    constexpr int most = std::chrono::duration_cast<std::chrono::minutes>(TextSettings::longestGrace).count();
    const int minutes = value.toInt(-1);
    if (minutes < 0 || minutes > most) {
        return fault(QStringLiteral("graceMinutes: expected a whole number from 0 to %1").arg(most));
    }
    settings->grace = std::chrono::minutes(minutes);
    return {};
}

Result<void> readShifts(const QJsonValue& value, TextSettings* settings)
{
    const QJsonObject shifts = value.toObject();
    if (shifts.isEmpty()) {
        return fault(QStringLiteral("shifts: expected an object like {\"06:00\": \"E\", \"18:00\": \"N\"}"));
    }
    for (auto shift = shifts.begin(); shift != shifts.end(); ++shift) {
        const auto time = timeOfDay(shift.key(), QStringLiteral("a shift's beginning"));
        if (!time) {
            return tl::make_unexpected(time.error());
        }
        const auto text = entryText(shift.value(), QStringLiteral("shift \"%1\"").arg(shift.key()));
        if (!text) {
            return tl::make_unexpected(text.error());
        }
        settings->shifts[*time] = *text;
    }
    return {};
}

Result<void> readTables(const QJsonValue& value, TextSettings* settings)
{
    const QJsonObject tables = value.toObject();
    if (!value.isObject()) {
        return fault(QStringLiteral("tables: expected an object of tables by name"));
    }
    for (auto entry = tables.begin(); entry != tables.end(); ++entry) {
        const auto table = letterTable(entry.key(), entry.value());
        if (!table) {
            return tl::make_unexpected(table.error());
        }
        settings->tables[entry.key()] = *table;
    }
    return {};
}

} // namespace

Result<TextSettings> textSettings(const QJsonObject& json)
{
    static const QMap<QString, Result<void> (*)(const QJsonValue&, TextSettings*)> readers{
        {QStringLiteral("dayBegins"), readDayBegin},
        {QStringLiteral("graceMinutes"), readGrace},
        {QStringLiteral("shifts"), readShifts},
        {QStringLiteral("tables"), readTables},
        {QStringLiteral("timeZone"), readZone},
    };
    TextSettings settings;
    for (auto entry = json.begin(); entry != json.end(); ++entry) {
        const auto reader = readers.value(entry.key());
        if (reader == nullptr) {
            return fault(QStringLiteral("\"%1\" is unknown, expected %2")
                             .arg(entry.key(), QStringList(readers.keys()).join(QStringLiteral(", "))));
        }
        const auto done = reader(entry.value(), &settings);
        if (!done) {
            return tl::make_unexpected(done.error());
        }
    }
    return settings;
}

LineClock systemClock()
{
    return [] { return QDateTime::currentDateTimeUtc(); };
}

} // namespace scribo::line
