#include "text.h"

#include <QStringList>

namespace scribo::tool {

QString countText(std::size_t count, const char* what)
{
    return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(what), QLatin1String(count == 1 ? "" : "s"));
}

QString bytesText(std::size_t bytes)
{
    constexpr double kilo = 1000;
    const auto size = static_cast<double>(bytes);
    if (size < kilo) {
        return countText(bytes, "byte");
    }
    return size < kilo * kilo ? QStringLiteral("%1 kB").arg(size / kilo, 0, 'f', 1)
                              : QStringLiteral("%1 MB").arg(size / (kilo * kilo), 0, 'f', 1);
}

QString groupedText(std::int64_t number)
{
    QString digits = QString::number(number);
    for (int at = digits.size() - 3; at > (number < 0 ? 1 : 0); at -= 3) {
        digits.insert(at, QLatin1Char(','));
    }
    return digits;
}

QString shapeText(const std::vector<std::int64_t>& extents)
{
    if (extents.empty()) {
        return QStringLiteral("scalar");
    }
    QStringList parts;
    for (std::int64_t extent : extents) {
        parts << (extent < 0 ? QStringLiteral("*") : QString::number(extent));
    }
    return parts.join(QLatin1Char('x'));
}

QString table(const QList<QStringList>& rows)
{
    QList<int> widths;
    for (const QStringList& row : rows) {
        for (int column = 0; column < row.size(); ++column) {
            if (column == widths.size()) {
                widths << 0;
            }
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    QString text;
    for (const QStringList& row : rows) {
        QString line;
        for (int column = 0; column < row.size(); ++column) {
            line += QStringLiteral("  ") + row[column].leftJustified(widths[column]);
        }
        while (line.endsWith(QLatin1Char(' '))) {
            line.chop(1);
        }
        text += line + QLatin1Char('\n');
    }
    return text;
}

} // namespace scribo::tool
