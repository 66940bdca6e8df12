#pragma once

#include "jobs/job.h"

#include <QStringList>

#include <tl/expected.hpp>

namespace scribo::line {

/// All that is wrong with a job, one sentence each: never empty.
struct JobFaults
{
    QStringList sentences;
};

/// Reads a job from its folder:
///
///     job.json       {"name": "carton", "number": 7, "model": "ocr_printed_p1_1_v1.trt",
///                     "regions": [{"name": "date", "rect": [140, 60, 270, 52],
///                                  "expected": "EXP {date:dd.MM.yyyy;+18 months}", "count": [14, 14]}],
///                     "text": {"dayBegins": "06:00"},
///                     "alignment": {"patch": "patch.png", "rect": [20, 30, 120, 80], "shift": [60, 60], "turn": 12,
///                                   "minimumScore": 0.7},
///                     "settings": "settings.json", "source": {"exposureMicroseconds": 500},
///                     "requireValidation": false}
///     settings.json  the plug-in's settings, as a host saves them
///     patch.png      the taught patch
///
/// "name", "number", "model" and "regions" must be there; of a region "name" and "rect". Keys that are unknown are
/// faults: a mistyped one would be left out of the inspection. Other files in the folder do not belong to the job.
tl::expected<Job, JobFaults> readJob(const QString& folder);

/// The same, as job.json's object: files that it names are not read.
tl::expected<Job, JobFaults> parseJob(const QJsonObject& json);

} // namespace scribo::line
