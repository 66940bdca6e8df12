#pragma once

#include "resinfo.h"

#include <QList>
#include <QString>
#include <QVariantMap>

/// The result record that a host collects of an item, with five keys: "defect_rects" (list of QRect, pixels of the
/// picture), "defect_scores" (list of double) and "defect_types" (list of QString), one element each for every line
/// that is not OK, in the same order; "charCount" (int) and "resString" (QString).

/// The record without content: all keys, each value empty or 0.
QVariantMap makeResultTemplate();

/// The record of an item with these judged lines. Where other processors name a defect, it has the line's text.
QVariantMap makeResultRecord(const QList<SOrgAI_ResInfo>& lines, int charCount, const QString& recognisedText);
