#pragma once

#include <QString>
#include <QVariant>

#include <vector>

/// A limit on the score of one defect type, as the host keeps it. Name, flag and the other values are the host's.
struct ScoreLimit
{
    QString name;
    bool flag = false;
    double values[4] = {}; ///< the first is the lowest score that counts
};

/// The limits in a list of maps with "name" (text), "flag" (bool) and "values" (list of four numbers). What is missing
/// or of another type reads as empty, false or 0.
std::vector<ScoreLimit> readScoreLimits(const QVariant& list);

/// The smallest first value of the limits, but at most 1: the confidence threshold that the detector gets.
float confidenceThreshold(const std::vector<ScoreLimit>& limits);
