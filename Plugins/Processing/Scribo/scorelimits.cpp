#include "scorelimits.h"

#include <algorithm>

std::vector<ScoreLimit> readScoreLimits(const QVariant& list)
{
    std::vector<ScoreLimit> limits;
    for (const QVariant& element : list.toList()) {
        const QVariantMap map = element.toMap();
        const QVariantList values = map[QStringLiteral("values")].toList();
        ScoreLimit limit;
        limit.name = map[QStringLiteral("name")].toString();
        limit.flag = map[QStringLiteral("flag")].toBool();
        for (int i = 0; i < std::min(values.size(), 4); ++i) {
            limit.values[i] = values[i].toDouble();
        }
        limits.push_back(limit);
    }
    return limits;
}

float confidenceThreshold(const std::vector<ScoreLimit>& limits)
{
    float threshold = 1.0F;
    for (const ScoreLimit& limit : limits) {
        if (limit.values[0] < static_cast<double>(threshold)) {
            threshold = static_cast<float>(limit.values[0]);
        }
    }
    return threshold;
}
