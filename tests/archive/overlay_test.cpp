#include "resultoverlay.h"

#include "recordingpaintdevice.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

const QColor green(0x4C, 0xAF, 0x50);
const QColor red(0xFF, 0x52, 0x52);

SOrgAI_ResInfo line(const std::string& text, const cv::Rect& rect, bool isOk)
{
    SOrgAI_ResInfo result;
    result.text = text;
    result.rect = rect;
    result.isOk = isOk;
    return result;
}

QVector<PaintedItem> paint(const QList<SOrgAI_ResInfo>& lines, const QList<int>& mismatches, int imageHeight = 1000)
{
    RecordingPaintDevice device;
    QPainter painter(&device);
    painter.setBrush(Qt::blue);
    prepareOverlay(painter, imageHeight);
    drawLines(painter, lines, mismatches);
    painter.end();
    EXPECT_EQ(device.unexpected(), 0);
    return device.items();
}

void expectText(const PaintedItem& item, const QString& text, QPoint corner, const QColor& colour)
{
    EXPECT_EQ(item.text, text);
    EXPECT_EQ(item.pen.color(), colour) << text.toStdString();
    EXPECT_EQ(item.baseline.x(), corner.x());
    // Aligned to the top: the baseline is as far below the corner as the font rises above it.
    RecordingPaintDevice device;
    EXPECT_NEAR(item.baseline.y(), corner.y() + QFontMetricsF(item.font, &device).ascent(), 1.0);
}

void expectBox(const PaintedItem& item, const QRect& rect, const QColor& colour)
{
    EXPECT_EQ(item.text, QString());
    EXPECT_EQ(item.rect, QRectF(rect));
    EXPECT_EQ(item.pen.color(), colour);
}

int fontSizeAt(int imageHeight)
{
    QImage canvas(10, 10, QImage::Format_RGB32);
    QPainter painter(&canvas);
    prepareOverlay(painter, imageHeight);
    return painter.font().pointSize();
}

/// The colours of a drawing on black, other than those of smoothed edges.
bool shows(const QImage& canvas, const QRect& area, const QColor& colour)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (canvas.pixel(x, y) == colour.rgb()) {
                return true;
            }
        }
    }
    return false;
}

QImage drawOnBlack(const QSize& size, const QList<SOrgAI_ResInfo>& lines, const QList<int>& mismatches)
{
    QImage canvas(size, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    prepareOverlay(painter, size.height());
    drawLines(painter, lines, mismatches);
    return canvas;
}

} // namespace

TEST(Overlay, TheFontFollowsTheHeightFromTenPointsUp)
{
    EXPECT_EQ(fontSizeAt(400), 10);
    EXPECT_EQ(fontSizeAt(549), 10);
    EXPECT_EQ(fontSizeAt(550), 11);
    EXPECT_EQ(fontSizeAt(1000), 20);
    EXPECT_EQ(fontSizeAt(2000), 40);
    EXPECT_EQ(fontSizeAt(0), 10);
    EXPECT_EQ(fontSizeAt(-1), 10);
}

TEST(Overlay, PreparesFontAndBrushAndLeavesThem)
{
    QImage canvas(10, 10, QImage::Format_RGB32);
    QPainter painter(&canvas);
    painter.setBrush(Qt::red);
    const QPen pen = painter.pen();
    prepareOverlay(painter, 1000);
    EXPECT_EQ(painter.font().family(), "times");
    EXPECT_EQ(painter.font().weight(), 8);
    EXPECT_FALSE(painter.font().italic());
    EXPECT_EQ(painter.brush(), QBrush(Qt::NoBrush));
    EXPECT_EQ(painter.pen(), pen);
}

TEST(Overlay, DrawsWithACosmeticPenOfThreePixels)
{
    const auto items = paint({line("A", {10, 20, 30, 40}, true)}, {});
    ASSERT_EQ(items.size(), 2);
    for (const PaintedItem& item : items) {
        EXPECT_EQ(item.pen.width(), 3);
        EXPECT_TRUE(item.pen.isCosmetic());
        EXPECT_EQ(item.pen.style(), Qt::SolidLine);
        EXPECT_EQ(item.brush.style(), Qt::NoBrush);
        EXPECT_EQ(item.font.pointSize(), 20);
        EXPECT_EQ(item.font.weight(), 8);
    }
}

TEST(Overlay, DrawsTheCharactersTwentyFivePixelsApart)
{
    const auto items = paint({line("AB1", {100, 50, 0, 0}, false)}, {2});
    ASSERT_EQ(items.size(), 3) << "no box without width and height";
    expectText(items[0], "A", {105, 55}, green);
    expectText(items[1], "B", {130, 55}, green);
    expectText(items[2], "1", {155, 55}, red);
}

TEST(Overlay, DrawsTheBoxFirstInTheColourOfTheLine)
{
    const auto good = paint({line("A", {100, 50, 300, 60}, true)}, {0});
    ASSERT_EQ(good.size(), 2);
    expectBox(good[0], {100, 50, 300, 60}, green);
    expectText(good[1], "A", {105, 55}, red);

    // A wrong count: every character matches, the line does not.
    const auto bad = paint({line("A", {100, 50, 300, 60}, false)}, {});
    ASSERT_EQ(bad.size(), 2);
    expectBox(bad[0], {100, 50, 300, 60}, red);
    expectText(bad[1], "A", {105, 55}, green);
}

TEST(Overlay, OneSideIsEnoughForABox)
{
    EXPECT_EQ(paint({line("", {1, 2, 5, 0}, true)}, {}).size(), 1);
    EXPECT_EQ(paint({line("", {1, 2, 0, 5}, true)}, {}).size(), 1);
    EXPECT_EQ(paint({line("", {1, 2, -3, 5}, true)}, {}).size(), 1);
    EXPECT_EQ(paint({line("", {1, 2, 0, 0}, true)}, {}).size(), 0);
    EXPECT_EQ(paint({line("", {1, 2, -3, -5}, true)}, {}).size(), 0);
}

TEST(Overlay, DrawsTheLinesInOrderWithOneListOfMismatches)
{
    const auto items = paint({line("AB", {0, 0, 100, 30}, true), line("CD", {0, 200, 100, 30}, false)}, {1});
    ASSERT_EQ(items.size(), 6);
    expectBox(items[0], {0, 0, 100, 30}, green);
    expectText(items[1], "A", {5, 5}, green);
    expectText(items[2], "B", {30, 5}, red);
    expectBox(items[3], {0, 200, 100, 30}, red);
    expectText(items[4], "C", {5, 205}, green);
    expectText(items[5], "D", {30, 205}, red);
}

TEST(Overlay, CountsCharactersNotBytes)
{
    const auto items = paint({line(u8"批号7", {0, 0, 0, 0}, true)}, {1});
    ASSERT_EQ(items.size(), 3);
    expectText(items[0], QStringLiteral("批"), {5, 5}, green);
    expectText(items[1], QStringLiteral("号"), {30, 5}, red);
    expectText(items[2], QStringLiteral("7"), {55, 5}, green);
}

TEST(Overlay, MismatchesBeyondTheTextDoNoHarm)
{
    const auto items = paint({line("A", {0, 0, 0, 0}, true)}, {-1, 1, 99});
    ASSERT_EQ(items.size(), 1);
    expectText(items[0], "A", {5, 5}, green);
}

TEST(Overlay, WithoutLinesNothingIsDrawn)
{
    EXPECT_TRUE(paint({}, {0, 1}).isEmpty());
}

TEST(Overlay, ThePenStaysThreePixelsWideWhenTheViewIsScaled)
{
    QImage canvas(200, 200, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    painter.scale(0.1, 0.1);
    prepareOverlay(painter, 2000);
    drawLines(painter, {line("", {500, 500, 1000, 1000}, true)}, {});
    painter.end();
    int width = 0;
    for (int x = 30; x < 70; ++x) {
        width += canvas.pixel(x, 100) == green.rgb() ? 1 : 0;
    }
    EXPECT_EQ(width, 3);
}

TEST(Overlay, TheBoxLeavesItsInsideAlone)
{
    const QImage canvas = drawOnBlack({400, 400}, {line("", {50, 60, 200, 100}, false)}, {});
    EXPECT_EQ(canvas.pixel(50, 100), red.rgb());
    EXPECT_EQ(canvas.pixel(250, 100), red.rgb());
    EXPECT_EQ(canvas.pixel(150, 60), red.rgb());
    EXPECT_EQ(canvas.pixel(150, 160), red.rgb());
    EXPECT_EQ(canvas.pixel(150, 110), QColor(Qt::black).rgb());
    EXPECT_EQ(canvas.pixel(20, 20), QColor(Qt::black).rgb());
    EXPECT_FALSE(shows(canvas, canvas.rect(), green));
}

TEST(Overlay, CharactersAppearAtTheirPlaces)
{
    // 1,000 pixels high, so that the strokes are wide enough to hold pixels of the full colour.
    const QImage canvas = drawOnBlack({600, 1000}, {line("HHH", {100, 200, 0, 0}, true)}, {1});
    EXPECT_TRUE(shows(canvas, {105, 205, 24, 60}, green));
    EXPECT_TRUE(shows(canvas, {130, 205, 24, 60}, red));
    EXPECT_TRUE(shows(canvas, {155, 205, 40, 60}, green));
    EXPECT_FALSE(shows(canvas, {0, 0, 100, 1000}, green));
    EXPECT_FALSE(shows(canvas, {0, 0, 600, 200}, green));
}
