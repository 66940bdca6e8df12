#include "files/recordfile.h"

#include "files/outputfile.h"
#include "resulttext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace scribo::host {

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

Result<void> RecordFile::open(const QString& path)
{
    isCsv = path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive);
    if (!isCsv && !path.endsWith(QLatin1String(".jsonl"), Qt::CaseInsensitive)) {
        return failure(path + QStringLiteral(": records go to a .jsonl or a .csv file"));
    }
    file.setFileName(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return unwritable(path, file.errorString());
    }
    return writeBytes(isCsv ? csvHeader : QByteArray());
}

Result<void> RecordFile::write(const QString& picture, const InspectionResult& result)
{
    QByteArray bytes;
    for (const RegionResult& region : result.regions) {
        bytes += isCsv ? csvRecord(picture, region) : jsonRecord(picture, region);
    }
    return writeBytes(bytes);
}

Result<void> RecordFile::writeBytes(const QByteArray& bytes)
{
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        return unwritable(file.fileName(), file.errorString());
    }
    return {};
}

} // namespace scribo::host
