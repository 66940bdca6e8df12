#pragma once

#include <QFont>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPen>
#include <QRectF>
#include <QString>
#include <QVector>

/// One thing drawn, with the state of the painter at that moment.
struct PaintedItem
{
    QRectF rect; ///< a rectangle; null for a text
    QString text;
    QPointF baseline; ///< where the text begins
    QPen pen;
    QBrush brush;
    QFont font;
};

/// Records rectangles and texts in the order in which they are drawn, and anything else as unexpected.
class RecordingPaintEngine : public QPaintEngine
{
public:
    RecordingPaintEngine()
        : QPaintEngine(AllFeatures)
    {
    }
    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState& state) override
    {
        if (state.state() & DirtyPen) {
            current.pen = state.pen();
        }
        if (state.state() & DirtyBrush) {
            current.brush = state.brush();
        }
        if (state.state() & DirtyFont) {
            current.font = state.font();
        }
    }
    void drawRects(const QRect* rects, int count) override
    {
        for (int i = 0; i < count; ++i) {
            addRect(rects[i]);
        }
    }
    void drawRects(const QRectF* rects, int count) override
    {
        for (int i = 0; i < count; ++i) {
            addRect(rects[i]);
        }
    }
    void drawTextItem(const QPointF& position, const QTextItem& item) override
    {
        PaintedItem painted = current;
        painted.text = item.text();
        painted.baseline = position;
        items.append(painted);
    }
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override { ++unexpected; }
    void drawPath(const QPainterPath&) override { ++unexpected; }
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override { ++unexpected; }
    void drawPolygon(const QPoint*, int, PolygonDrawMode) override { ++unexpected; }

    QVector<PaintedItem> items;
    int unexpected = 0;

private:
    void addRect(const QRectF& rect)
    {
        PaintedItem painted = current;
        painted.rect = rect;
        items.append(painted);
    }

    PaintedItem current;
};

class RecordingPaintDevice : public QPaintDevice
{
public:
    QPaintEngine* paintEngine() const override { return &engine; }
    const QVector<PaintedItem>& items() const { return engine.items; }
    int unexpected() const { return engine.unexpected; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
        case PdmHeight:
            return 2000;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    mutable RecordingPaintEngine engine;
};
