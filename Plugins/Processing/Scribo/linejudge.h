#pragma once

#include "resinfo.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <vector>

struct PluginSettings;

/// Decides whether a read line is OK: against the reference, where comparison is on, and against the
/// allowed number of characters. Learns the reference in the automatic mode.
class LineJudge
{
public:
    /// `settings` supplies mode, reference and limits and receives what was read last and, in the
    /// automatic mode, the reference; it must outlive the judge. `characterGroups`: each is a set of
    /// characters that may stand for one another. `ignoredCharacters` are dropped before anything is
    /// counted or compared.
    LineJudge(PluginSettings& settings, QStringList characterGroups, QString ignoredCharacters);

    /// Judges the lines read in one region and appends them, with their verdicts and with boxes in
    /// picture coordinates, to `judged`. `region` is the part of the picture that was read, in pixels.
    /// Where a reading is longer or shorter than the reference, the positions (of the reading without
    /// its ignored characters) that differ are appended to `mismatches`.
    /// Returns the verdict of the last line; true when there is none.
    bool judge(const std::vector<SOrgAI_ResInfo>& lines, const QRectF& region, QList<SOrgAI_ResInfo>* judged,
        QList<int>* mismatches);

private:
    QStringList positionPatterns() const;
    QString withoutIgnored(const QString& text) const;
    bool isLearning() const;
    void learn(const QString& text);
    bool isComparing() const;
    bool matches(const QString& text, const QStringList& patterns, QList<int>* mismatches) const;
    bool judgeLine(const std::string& reading, const QStringList& patterns, QList<int>* mismatches);

    PluginSettings& settings;
    const QStringList characterGroups;
    const QString ignoredCharacters;
};
