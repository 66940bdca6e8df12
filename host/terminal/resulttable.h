#pragma once

#include "terminal/pictureresult.h"

#include <QStringList>

namespace scribo::host {

/// The results as a table for people, a row for each region.
class ResultTable
{
public:
    /// `pictures`: the names of all pictures to come, for the width of their column.
    explicit ResultTable(const QStringList& pictures);

    QString header() const;
    /// The rows of one picture, each with its line break. The picture's name stands in its first row.
    QString rows(const PictureResult& picture) const;

private:
    QString row(const QString& picture, const QString& text, const QString& count, const QString& verdict,
        const QString& milliseconds) const;

    int pictureWidth;
};

/// What is counted over all pictures.
struct Totals
{
    int ok = 0;
    int ng = 0;
    int faults = 0;
    QList<double> milliseconds; ///< of the pictures that were inspected

    void add(const PictureResult& picture);
    /// One line, without a line break.
    QString summary() const;
};

/// One JSON object for programs, without a line break.
QByteArray toJsonLine(const PictureResult& picture);

} // namespace scribo::host
