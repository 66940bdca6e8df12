#pragma once

#include "inspectionresult.h"

#include <QFile>
#include <QString>

/// A file of result records, one line for each inspected item, in one of two forms by the file's name:
///
/// - ".jsonl": a JSON object a line
/// - ".csv": comma-separated values (RFC 4180 with plain line feeds) with a header; the lists of NG boxes,
///   scores and types are JSON arrays in their cells
///
/// Each picture's records are handed to the system before the next picture, so a run that is stopped leaves
/// what it got to.
class RecordFile
{
public:
    /// Replaces the file. Returns false with the file and the reason in `error`.
    bool open(const QString& path, QString* error);

    /// Adds the records of a picture. Returns false with the file and the reason in `error` when they could
    /// not be written.
    bool write(const PictureResult& picture, QString* error);

private:
    bool writeBytes(const QByteArray& bytes, QString* error);

    QFile file;
    bool isCsv = false;
};
