#include "resultoverlay.h"

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPen>
#include <QString>

#include <algorithm>
#include <limits>

namespace {

constexpr int penWidth = 3; ///< device pixels
constexpr int textMargin = 5; ///< from the box's corner, in picture pixels as all below
constexpr int characterStep = 25; ///< fixed, so large fonts overlap
constexpr int minTextWidth = 220;
constexpr int minTextHeight = 200;
constexpr int textFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap;

constexpr int farthest = std::numeric_limits<int>::max();

/// One direction of the rectangle that a character is drawn into.
struct TextSpan
{
    int start;
    int length;
};

/// Begins `offset` behind the box's start. A box may lie anywhere, so both ends are kept within an integer.
TextSpan textSpan(int boxStart, qint64 offset, int boxLength, int minLength)
{
    const auto start = static_cast<int>(std::min<qint64>(boxStart + offset, farthest - minLength));
    return {start, std::min(std::max(boxLength, minLength), farthest - std::max(start, 0))};
}

void setPenColour(QPainter& painter, QPen& pen, bool ok)
{
    pen.setColor(QColor(ok ? QStringLiteral("#4CAF50") : QStringLiteral("#FF5252")));
    painter.setPen(pen);
}

void drawLine(QPainter& painter, QPen& pen, const SOrgAI_ResInfo& line, const QList<int>& mismatches)
{
    const cv::Rect& box = line.rect;
    setPenColour(painter, pen, line.isOk);
    if (box.width > 0 || box.height > 0) {
        painter.drawRect(box.x, box.y, box.width, box.height);
    }

    const QString text = QString::fromStdString(line.text);
    const TextSpan rows = textSpan(box.y, textMargin, box.height, minTextHeight);
    for (int i = 0; i < text.size(); ++i) {
        setPenColour(painter, pen, !mismatches.contains(i));
        const TextSpan columns = textSpan(box.x, textMargin + qint64{characterStep} * i, box.width, minTextWidth);
        painter.drawText(columns.start, rows.start, columns.length, rows.length, textFlags, QString(text.at(i)));
    }
}

} // namespace

void prepareOverlay(QPainter& painter, int imageHeight)
{
    const int size = std::max(imageHeight / 50, 10);
    QFont font(QStringLiteral("times"), size, 2, false);
    font.setWeight(8);
    painter.setFont(font);
    painter.setBrush(Qt::NoBrush);
}

void drawLines(QPainter& painter, const QList<SOrgAI_ResInfo>& lines, const QList<int>& mismatches)
{
    QPen pen;
    pen.setWidth(penWidth);
    pen.setCosmetic(true);
    for (const SOrgAI_ResInfo& line : lines) {
        drawLine(painter, pen, line, mismatches);
    }
}
