#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

/// How numbers and shapes are written for people.
namespace scribo::tool {

/// "1 operation", "18 operations".
QString countText(std::size_t count, const char* what);
/// "912 bytes", "1.9 MB".
QString bytesText(std::size_t bytes);
/// "499,047".
QString groupedText(std::int64_t number);
/// "1x3x32x*"; the width decides an extent of *; "scalar" for no extents.
QString shapeText(const std::vector<std::int64_t>& extents);
/// The rows as a table with two blanks between columns as wide as their widest cell.
QString table(const QList<QStringList>& rows);

} // namespace scribo::tool
