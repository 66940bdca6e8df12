#include "rules/expectcommand.h"

#include "rules/expectedtext.h"
#include "rules/localmoment.h"

namespace scribo::line {

namespace {

Result<QDateTime> momentOf(const QString& text, const QTimeZone& zone)
{
    const QString dayText = text.section(QLatin1Char('T'), 0, 0);
    const QString timeText = text.section(QLatin1Char('T'), 1);
    const QDate day = QDate::fromString(dayText, QStringLiteral("yyyy-MM-dd"));
    QTime time = QTime::fromString(timeText, QStringLiteral("HH:mm"));
    if (!time.isValid()) {
        time = QTime::fromString(timeText, QStringLiteral("HH:mm:ss"));
    }
    if (!day.isValid() || !time.isValid()) {
        return failure(
            QStringLiteral("the time is \"%1\", expected one like 2026-11-21T05:59").arg(text).toStdString());
    }
    const auto moment = LocalMoment::whenShown(day, time, zone);
    if (!moment) {
        return failure(QStringLiteral("the clock of %1 never shows %2: it is set forward over it")
                           .arg(QString::fromUtf8(zone.id()), text)
                           .toStdString());
    }
    return QDateTime::fromMSecsSinceEpoch(*moment, Qt::UTC);
}

} // namespace

Result<QString> expectCommand(const QString& text, const ExpectOptions& options, const LineClock& clock)
{
    if (!options.settings.zone.isValid()) {
        return failure("the time zone is not valid");
    }
    const auto now = options.at.isEmpty() ? Result<QDateTime>(clock()) : momentOf(options.at, options.settings.zone);
    if (!now) {
        return tl::make_unexpected(now.error());
    }
    const auto expected = ExpectedText::create(text, options.settings);
    if (!expected) {
        return tl::make_unexpected(expected.error());
    }
    const auto expectation = expected->at({*now, options.lot, options.counter});
    if (!expectation) {
        return tl::make_unexpected(expectation.error());
    }
    QString lines;
    for (const AcceptedText& accepted : expectation->texts()) {
        lines += accepted.text() + QLatin1Char('\n');
    }
    return lines;
}

} // namespace scribo::line
