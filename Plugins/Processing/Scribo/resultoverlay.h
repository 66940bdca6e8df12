#pragma once

#include "resinfo.h"

#include <QList>

class QPainter;

/// The reading drawn over the picture, in picture coordinates. Font, pen and brush of the painter are left
/// changed.

/// Sets the font for a picture of `imageHeight` pixels, a fiftieth of it but at least 10 points, and no brush.
void prepareOverlay(QPainter& painter, int imageHeight);

/// Draws each line's box and, from its top left corner and 25 pixels apart, its characters.
///
/// The box is green when the line is OK and red otherwise; a line without width and height has none. A character
/// is red when its position (0-based, in UTF-16 units of the text) is among `mismatches` and green otherwise. The
/// two are independent: a line can be NG for its count alone, and then has green characters in a red box.
void drawLines(QPainter& painter, const QList<SOrgAI_ResInfo>& lines, const QList<int>& mismatches);
