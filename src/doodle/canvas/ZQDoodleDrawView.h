#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/board/DoodleSurface.h>

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QTimer>
#include <QWidget>

// A widget that shows one drawing surface (DoodleSurface), the board's
// toolkit-neutral picture: every primitive paints into the surface and the
// widget repaints only the rectangle it changed. A surface that holds nothing
// holds no picture.
class DOODLE_EXPORT ZQDoodleDrawView : public QWidget
{
    Q_OBJECT
public:
    explicit ZQDoodleDrawView(QWidget *parent = nullptr);

    // A null image when the surface holds nothing.
    QImage cacheImage() const { return m_surface.picture(); }
    void setCacheImage(const QImage &image);

    // Strokes the path with round caps and joins.
    void drawInCacheWithPath(const QPainterPath &path, double width, const QColor &color);
    // Empties the surface, then strokes the path: it shows this path alone.
    void drawInTempWithPath(const QPainterPath &path, double width, const QColor &color);
    // A round dot of the width's diameter: a stroke of zero length with round
    // caps. `erase` clears it instead.
    void dotInCacheWithPoint(const QPointF &point, double width, const QColor &color,
                             bool erase = false);
    // Clears to transparent every pixel under the path stroked at that width.
    void eraseInCacheWithPath(const QPainterPath &path, double width);
    // Strokes the rectangle's outline with mitred corners.
    void rectangleInCacheWithRect(const QRectF &rect, double width, const QColor &color);
    // Strokes the ellipse inscribed in the rectangle.
    void ellipseInCacheWithRect(const QRectF &rect, double width, const QColor &color);
    // A shaft from start to end and a filled head whose apex is the end point.
    void arrowInCacheWithStartPoint(const QPointF &start, const QPointF &end, double width,
                                    const QColor &color);
    // The text in the system font, its top-left corner at the point.
    void textInCacheWithStartPoint(const QPointF &point, const QString &text, double textSize,
                                   const QColor &color);
    // Draws the picture scaled into the rectangle, over what the surface shows.
    void drawImage(const QImage &image, const QRectF &rect);
    // Empties the surface and removes every child widget (a text field, say).
    void cleanAllPath();
    // Like cleanAllPath, but keeps the picture's memory (cleared) for a shape
    // drawn right after, as a preview redrawn on every move is.
    void cleanForRedraw();

    // Region redraw: between begin and end, primitives draw into a scratch
    // picture whose region starts transparent, and shapes that miss the region
    // are skipped; the end copies the region into the surface. Shapes are
    // clipped to the region only where that cannot change its pixels (not
    // hairline pens), so they are exactly those a redraw of the whole surface
    // gives.
    // `base`, a picture of this surface's size, gives the region's starting
    // pixels; a null image starts it transparent.
    void beginRegionRedraw(const QRect &region, const QImage &base = QImage());
    void endRegionRedraw();
    // Copies the region as the redraw has it so far into `target`, a picture
    // of this surface's size; false when there is no such region or picture.
    bool copyRegionTo(QImage &target) const;
    // While a target is set, primitives draw into it (a picture of this
    // surface's size) instead of the surface; nullptr draws on the surface again.
    void setTarget(QImage *target) { m_surface.setTarget(target); }
    // While measuring, primitives draw nothing and only report, through
    // lastPaintedRect, the rectangle they would change.
    void setMeasuring(bool measuring) { m_surface.setMeasuring(measuring); }
    // Copies the picture into `target`, reusing its memory when it fits.
    void copyPicture(QImage &target) const;
    // The rectangle (in view points) the last primitive could have changed;
    // empty when it drew nothing.
    QRect lastPaintedRect() const { return m_surface.lastPaintedRect(); }
    // The surface this widget shows.
    DoodleSurface *surface() { return &m_surface; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void childEvent(QChildEvent *event) override;

private:
    void removeChildWidgets();
    void showInBands();
    void showNextBand();
    int shownDownTo() const;

    DoodleSurface m_surface;
    QTimer m_nextBand;
    // Of a whole picture being shown a band at a time; a stretched picture
    // shows only in the bands shown so far.
    int m_bandsLeft = 0;
};
