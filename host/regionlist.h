#pragma once

#include "result.h"
#include "taughtregion.h"

#include <QJsonValue>

namespace scribo::host {

/// Reads a list of regions from JSON:
///
///     [[140, 60, 270, 52], {"rect": [140, 140, 270, 52], "reference": "LOT:A4827", "count": [9, 9]}]
///
/// A region is a list [x, y, width, height] or an object with "rect" and, where a text of its own is expected there,
/// "reference" (a text) and "count" ([min, max]). There is at least one. The error starts with the region's number
/// from 1.
Result<QList<TaughtRegion>> readRegionList(const QJsonValue& value);

} // namespace scribo::host
