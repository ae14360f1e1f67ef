#pragma once

#include <doodle/DoodleExport.h>

#include <QFont>
#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>

// Checks and bounds for the numbers a drawing primitive is given, so that no
// input makes a primitive crash, hang or allocate without limit. Internal to
// the canvas.
class DOODLE_EXPORT DoodleDrawInput
{
public:
    static bool isFinite(const QPointF &point);
    static bool isFinite(const QRectF &rect);
    static bool isFinite(const QPainterPath &path);

    // The path with every coordinate brought within +-kMaxCoordinate points.
    // Qt rasterises coordinates beyond that by another route, whose pixels
    // depend on the clip; within it a shape gives the same pixels whether the
    // whole surface or only a region is drawn again. What lies past the bound
    // is off every board, so only a far point's direction changes, alike on
    // every path that draws it.
    static QPainterPath bounded(const QPainterPath &path);
    static QPointF bounded(const QPointF &point);
    // A rectangle between its bounded corners; a non-finite one as it is.
    static QRectF bounded(const QRectF &rect);
    static constexpr double kMaxCoordinate = 1.0e5;

    // The width from which a stroke through `anchor` covers the whole surface:
    // twice the distance to the farthest corner.
    static double coveringWidth(const QPointF &anchor, const QSizeF &bounds);
    // The width to stroke with: none for NaN and negative widths; wider than
    // the covering width only by a margin.
    static std::optional<double> lineWidth(double width, const QPointF &anchor,
                                           const QSizeF &bounds);
    // The font size to draw with: none unless positive; at most the
    // surface's diagonal, beyond which one glyph alone covers the surface.
    static std::optional<double> textSize(double size, const QSizeF &bounds);
    // The start of a one-line text that can reach the surface's right edge
    // from `x`; the rest can never be visible.
    static QString visibleText(const QString &text, double x, double surfaceWidth,
                               double pixelSize);
    // The system font whose pixel size, in device-independent pixels, is
    // `pixelSize` rounded (the font engine renders whole pixel sizes only).
    static QFont systemFont(double pixelSize);

    // The shapes the surfaces draw, for every painter that draws them alike.
    // The outer edge of the stroke of the ellipse inscribed in `box`: every
    // point of the ellipse moved outwards along its normal by `distance`.
    static QPolygonF ellipseOuterEdge(const QRectF &box, double distance);
    // A shaft from start to end and a head, for a pen `w` wide, whose apex is
    // the end point; none when the two points do not give a direction.
    static std::optional<QPainterPath> arrowPath(const QPointF &start, const QPointF &end,
                                                 double w);
};
