#include "rules/textpart.h"

namespace scribo::line {

QString partName(PartKind kind)
{
    switch (kind) {
    case PartKind::text:
        return QStringLiteral("text");
    case PartKind::day:
        return QStringLiteral("day");
    case PartKind::month:
        return QStringLiteral("month");
    case PartKind::year:
        return QStringLiteral("year");
    case PartKind::week:
        return QStringLiteral("week");
    case PartKind::weekday:
        return QStringLiteral("weekday");
    case PartKind::dayOfYear:
        return QStringLiteral("day of the year");
    case PartKind::quarter:
        return QStringLiteral("quarter");
    case PartKind::hour:
        return QStringLiteral("hour");
    case PartKind::minute:
        return QStringLiteral("minute");
    case PartKind::second:
        return QStringLiteral("second");
    case PartKind::dayHalf:
        return QStringLiteral("AM or PM");
    case PartKind::shift:
        return QStringLiteral("shift");
    case PartKind::lot:
        return QStringLiteral("lot");
    case PartKind::counter:
        return QStringLiteral("counter");
    case PartKind::match:
        return QStringLiteral("match");
    }
    return {};
}

QString AcceptedText::text() const
{
    QString joined;
    for (const TextPart& part : parts) {
        joined += part.kind == PartKind::match ? QStringLiteral("{match:%1}").arg(part.text) : part.text;
    }
    return joined;
}

} // namespace scribo::line
