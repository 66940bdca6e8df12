#pragma once

#include "inspectionresult.h"
#include "result.h"

#include <QFile>
#include <QString>

namespace scribo::host {

/// A file of result records, one line for each inspected item, in one of two forms by the file's name:
///
/// - ".jsonl": a JSON object a line
/// - ".csv": comma-separated values (RFC 4180 with plain line feeds) with a header; the lists of NG boxes,
///   scores and types are JSON arrays in their cells
///
/// Each picture's records are handed to the system before the next picture. A run that is stopped leaves all records up
/// to there.
class RecordFile
{
public:
    /// Replaces the file. Errors of both functions start with it.
    Result<void> open(const QString& path);

    /// Adds the records of a picture, which `picture` names.
    Result<void> write(const QString& picture, const InspectionResult& result);

private:
    Result<void> writeBytes(const QByteArray& bytes);

    QFile file;
    bool isCsv = false;
};

} // namespace scribo::host
