#include "resultrecord.h"

#include <QRect>
#include <QVariantList>

QVariantMap makeResultTemplate()
{
    return makeResultRecord({}, 0, QString());
}

QVariantMap makeResultRecord(const QList<SOrgAI_ResInfo>& lines, int charCount, const QString& recognisedText)
{
    QVariantList rects;
    QVariantList scores;
    QVariantList types;
    for (const SOrgAI_ResInfo& line : lines) {
        if (line.isOk) {
            continue;
        }
        rects.append(QRect(line.rect.x, line.rect.y, line.rect.width, line.rect.height));
        scores.append(line.score);
        types.append(QString::fromStdString(line.text));
    }
    QVariantMap record;
    record[QStringLiteral("defect_rects")] = rects;
    record[QStringLiteral("defect_scores")] = scores;
    record[QStringLiteral("defect_types")] = types;
    record[QStringLiteral("charCount")] = charCount;
    record[QStringLiteral("resString")] = recognisedText;
    return record;
}
