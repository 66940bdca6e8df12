#include "terminal/resulttable.h"

#include "resulttext.h"
#include "terminal/terminalcolumns.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace scribo::host {

namespace {

constexpr int narrowestPicture = 7; // the heading "picture"
constexpr int widestPicture = 40;
constexpr int textWidth = 20;

/// A table row is one line, whatever is in a file name or a text.
QString printable(QString text)
{
    std::replace_if(
        text.begin(), text.end(), [](QChar character) { return !character.isPrint() && !character.isSurrogate(); },
        QChar(QChar::ReplacementCharacter));
    return text;
}

QString formatMilliseconds(double milliseconds)
{
    return QString::number(milliseconds, 'f', 1);
}

/// To microseconds: what follows is noise.
double rounded(double milliseconds)
{
    return qRound64(milliseconds * 1000.0) / 1000.0;
}

QJsonArray toJson(const QRect& box)
{
    return {box.x(), box.y(), box.width(), box.height()};
}

QString comparisonName(Comparison comparison)
{
    switch (comparison) {
    case Comparison::fixed:
        return QStringLiteral("fixed");
    case Comparison::automatic:
        return QStringLiteral("auto");
    default:
        return QStringLiteral("off");
    }
}

QJsonObject toJson(const RegionResult& region)
{
    QJsonArray ngLines;
    for (const NgLine& line : region.ngLines) {
        ngLines.append(QJsonObject{{"box", toJson(line.box)}, {"score", line.score}, {"text", line.text}});
    }
    QJsonObject object{
        {"index", region.index},
        {"rect", QJsonArray{region.rect.x(), region.rect.y(), region.rect.width(), region.rect.height()}},
        {"verdict", verdictText(region.isOk)},
        {"text", region.text},
        {"count", region.count},
        {"milliseconds", rounded(region.milliseconds)},
        {"compare", comparisonName(region.comparison)},
        {"ng", ngLines},
    };
    if (region.comparison != Comparison::off) {
        object["reference"] = region.reference;
    }
    return object;
}

/// Of a list that is not empty.
double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

ResultTable::ResultTable(const QStringList& pictures)
    : pictureWidth(narrowestPicture)
{
    for (const QString& picture : pictures) {
        pictureWidth = std::max(pictureWidth, std::min(terminalColumns(picture), widestPicture));
    }
}

QString ResultTable::header() const
{
    return row(QStringLiteral("picture"), QStringLiteral("text"), QStringLiteral("count"), QStringLiteral("verdict"),
        QStringLiteral("ms"));
}

QString ResultTable::row(const QString& picture, const QString& text, const QString& count, const QString& verdict,
    const QString& milliseconds) const
{
    return paddedTo(pictureWidth, picture) + QStringLiteral("  ") + paddedTo(textWidth, text) + count.rightJustified(7)
        + QStringLiteral("  ") + verdict.leftJustified(7) + milliseconds.rightJustified(9) + QLatin1Char('\n');
}

QString ResultTable::rows(const PictureResult& picture) const
{
    const QString name = printable(picture.picture);
    if (!picture.inspection) {
        return row(name, {}, {}, QStringLiteral("fault"), {});
    }
    QString text;
    for (const RegionResult& region : picture.inspection->regions) {
        text += row(region.index == 0 ? name : QString(),
            unreadMessage(region).isEmpty() ? printable(region.text) : QStringLiteral("(not read)"),
            region.count < 0 ? QStringLiteral("-") : QString::number(region.count), verdictText(region.isOk),
            formatMilliseconds(region.milliseconds));
    }
    return text;
}

void Totals::add(const PictureResult& picture)
{
    if (!picture.inspection) {
        ++faults;
        return;
    }
    ++(picture.inspection->isOk ? ok : ng);
    milliseconds.append(picture.inspection->milliseconds);
}

QString Totals::summary() const
{
    const int pictures = ok + ng + faults;
    return QStringLiteral("%1 %2: %3 OK, %4 NG, %5 %6; median %7 ms")
        .arg(pictures)
        .arg(pictures == 1 ? QStringLiteral("picture") : QStringLiteral("pictures"))
        .arg(ok)
        .arg(ng)
        .arg(faults)
        .arg(faults == 1 ? QStringLiteral("fault") : QStringLiteral("faults"))
        .arg(milliseconds.isEmpty() ? QStringLiteral("-") : formatMilliseconds(median(milliseconds)));
}

QByteArray toJsonLine(const PictureResult& picture)
{
    QJsonObject object{{"picture", picture.picture}};
    if (picture.inspection) {
        QJsonArray regions;
        for (const RegionResult& region : picture.inspection->regions) {
            regions.append(toJson(region));
        }
        object["verdict"] = verdictText(picture.inspection->isOk);
        object["milliseconds"] = rounded(picture.inspection->milliseconds);
        object["regions"] = regions;
    } else {
        object["verdict"] = QStringLiteral("FAULT");
        object["fault"] = textOf(picture.inspection.error());
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace scribo::host
