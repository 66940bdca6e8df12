#include "recordfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace {

const QByteArray csvHeader = "time,picture,index,verdict,text,count,ng_boxes,ng_scores,ng_types\n";

struct NgLists
{
    explicit NgLists(const RegionResult& region)
    {
        for (const NgLine& line : region.ngLines) {
            boxes.append(QJsonArray{line.box.x(), line.box.y(), line.box.width(), line.box.height()});
            scores.append(line.score);
            types.append(line.text);
        }
    }

    QJsonArray boxes;
    QJsonArray scores;
    QJsonArray types;
};

/// Local time with its distance from UTC, so that records of two stations can be put in order.
QString timeText(const RegionResult& region)
{
    return region.time.toOffsetFromUtc(region.time.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

QByteArray jsonRecord(const QString& picture, const RegionResult& region)
{
    const NgLists ng(region);
    const QJsonObject object{
        {"time", timeText(region)},
        {"picture", picture},
        {"index", region.index},
        {"verdict", verdictText(region.isOk)},
        {"text", region.text},
        {"count", region.count},
        {"ng_boxes", ng.boxes},
        {"ng_scores", ng.scores},
        {"ng_types", ng.types},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QString csvCell(QString text)
{
    const bool needsQuotes = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"'))
        || text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
    if (!needsQuotes) {
        return text;
    }
    text.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString csvCell(const QJsonArray& array)
{
    return csvCell(QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact)));
}

QByteArray csvRecord(const QString& picture, const RegionResult& region)
{
    const NgLists ng(region);
    const QStringList cells = {
        timeText(region),
        csvCell(picture),
        QString::number(region.index),
        verdictText(region.isOk),
        csvCell(region.text),
        QString::number(region.count),
        csvCell(ng.boxes),
        csvCell(ng.scores),
        csvCell(ng.types),
    };
    return cells.join(QLatin1Char(',')).toUtf8() + '\n';
}

} // namespace

bool RecordFile::open(const QString& path, QString* error)
{
    isCsv = path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
    if (!isCsv && !path.endsWith(QLatin1String(".jsonl"), Qt::CaseInsensitive)) {
        *error = path + QStringLiteral(": records go to a .jsonl or a .csv file");
        return false;
    }
    file.setFileName(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        *error = path + QStringLiteral(": cannot be written: ") + file.errorString();
        return false;
    }
    return writeBytes(isCsv ? csvHeader : QByteArray(), error);
}

bool RecordFile::write(const PictureResult& picture, QString* error)
{
    QByteArray bytes;
    for (const RegionResult& region : picture.regions) {
        bytes += isCsv ? csvRecord(picture.picture, region) : jsonRecord(picture.picture, region);
    }
    return writeBytes(bytes, error);
}

bool RecordFile::writeBytes(const QByteArray& bytes, QString* error)
{
    if (file.write(bytes) == bytes.size() && file.flush()) {
        return true;
    }
    *error = file.fileName() + QStringLiteral(": cannot be written: ") + file.errorString();
    return false;
}
