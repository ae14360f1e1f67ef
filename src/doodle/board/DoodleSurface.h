#pragma once

#include <doodle/DoodleExport.h>

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>

#include <functional>
#include <optional>

class QPainter;

// One transparent drawing surface: a single cached picture at the screen
// scale that every primitive paints into. It knows no toolkit: whoever shows
// it tells it its size in view points and hears which rectangle changed. A
// surface that holds nothing holds no picture.
class DOODLE_EXPORT DoodleSurface
{
public:
    using SizeSource = std::function<QSize()>;
    using ChangeSink = std::function<void(const QRect &)>;
    using ReplaceSink = std::function<void()>;

    DoodleSurface() = default;
    // The size is read before every primitive, so it follows the view that
    // shows the surface; the sink hears every rectangle to show again, and
    // `replaced` (when given, else the sink) that a whole new picture was set.
    void setHost(SizeSource size, ChangeSink changed, ReplaceSink replaced = {});
    // The size without a host (a surface drawn off screen).
    void setSize(const QSize &size) { m_size = size; }
    QSize size() const { return m_sizeSource ? m_sizeSource() : m_size; }
    // The device pixels per point; 0 (the default) follows the screen. A
    // surface drawn on a worker thread is given the scale it is to draw at.
    void setScale(double scale) { m_scale = scale; }
    double scale() const;
    QRect rect() const { return QRect(QPoint(), size()); }

    // A null image when the surface holds nothing.
    const QImage &picture() const { return m_cacheImage; }
    void setPicture(const QImage &image);
    // Whether the picture was composed at another size and shows stretched.
    bool isStretched() const
    {
        return !m_cacheImage.isNull() && m_cacheImage.deviceIndependentSize() != QSizeF(size());
    }

    void drawPath(const QPainterPath &path, double width, const QColor &color);
    void drawDot(const QPointF &point, double width, const QColor &color, bool erase);
    void erasePath(const QPainterPath &path, double width);
    void drawRectangle(const QRectF &rect, double width, const QColor &color);
    void drawEllipse(const QRectF &rect, double width, const QColor &color);
    void drawArrow(const QPointF &start, const QPointF &end, double width, const QColor &color);
    void drawText(const QPointF &point, const QString &text, double textSize, const QColor &color);
    void drawImage(const QImage &image, const QRectF &rect);
    // Empties the surface; `release` gives its memory back, otherwise the
    // cleared picture is kept for a shape drawn right after.
    void clear(bool release);

    // Region redraw: between begin and end, primitives draw into a scratch
    // picture whose region starts from `base` (transparent when null) and
    // skip shapes that miss it; the end copies the region into the picture.
    // The pixels are those a redraw of the whole surface gives.
    void beginRegionRedraw(const QRect &region, const QImage &base = QImage());
    void endRegionRedraw();
    // The region as the redraw has it so far, into a picture of this size.
    bool copyRegionTo(QImage &target) const;
    // While set, primitives draw into `target` instead of the picture.
    void setTarget(QImage *target) { m_target = target; }
    // While measuring, primitives only report the rectangle they would change.
    void setMeasuring(bool measuring) { m_measuring = measuring; }
    // Copies the picture into `target`, reusing its memory when it fits.
    void copyPicture(QImage &target) const;
    // The rectangle (view points) the last primitive could have changed.
    QRect lastPaintedRect() const { return m_lastPainted; }

    // Shows the rectangle `dirty` (view points) of the picture on a painter
    // whose device has any scale; a picture of an older size is stretched.
    void paint(QPainter &painter, const QRect &dirty) const;

private:
    bool preparePicture();
    bool clipsExactly(std::optional<double> penWidth) const;
    template <typename Draw>
    void paintShape(const QRectF &dirty, std::optional<double> penWidth, Draw draw);
    QRect devicePixels(const QRect &area) const;
    void strokePath(const QPainterPath &path, double width, const QColor &color, bool erase,
                    bool dot);
    void changed(const QRect &area) const;

    SizeSource m_sizeSource;
    ChangeSink m_changeSink;
    ReplaceSink m_replaceSink;
    QSize m_size;
    double m_scale = 0;
    QImage m_cacheImage;
    // Union of the rectangles painted since the picture was last empty.
    QRect m_paintedRect;
    QRect m_lastPainted;
    QRect m_region; // the region being redrawn, if any
    bool m_measuring = false;
    QImage *m_target = nullptr;
    QImage m_scratch; // kept between region redraws
};
