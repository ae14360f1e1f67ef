#include "DoodleTile_p.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

bool paints(const QColor &color)
{
    return color.isValid() && color.alpha() > 0;
}

// `image` scaled to fit `bounds` with its aspect ratio kept, centred.
QRectF fittedRect(const QImage &image, const QRectF &bounds)
{
    QRectF target(QPointF(),
                  image.deviceIndependentSize().scaled(bounds.size(), Qt::KeepAspectRatio));
    target.moveCenter(bounds.center());
    return target;
}

} // namespace

QImage DoodleTile::currentImage() const
{
    return selected && !selectedImage.isNull() ? selectedImage : normalImage;
}

QRectF DoodleTile::tileRect(const QRectF &bounds) const
{
    if (tileSize.isEmpty())
        return bounds;
    QRectF tile(QPointF(), tileSize);
    tile.moveCenter(bounds.center());
    return tile;
}

QPainterPath DoodleTile::roundedShape(const QRectF &rect, double radius)
{
    const double limit = std::min(rect.width(), rect.height()) * 0.5;
    const double clamped = std::clamp(radius, 0.0, std::max(limit, 0.0));
    QPainterPath shape;
    shape.addRoundedRect(rect, clamped, clamped);
    return shape;
}

void DoodleTile::paintBackground(QPainter &painter, const QRectF &rect, const QColor &color,
                                 double radius)
{
    if (!paints(color))
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    // A radius beyond half the shorter side makes the ends semicircles.
    painter.fillPath(roundedShape(rect, radius), color);
}

void DoodleTile::paint(QPainter &painter, const QRectF &area, bool enabled, bool down,
                       const QString &title, const QFont &font) const
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    // Unavailable: everything at a third of its strength.
    if (!enabled)
        painter.setOpacity(0.3);
    const QRectF bounds = tileRect(area);
    const QPainterPath shape = roundedShape(bounds, cornerRadius);
    if (paints(backgroundColor))
        painter.fillPath(shape, backgroundColor);
    painter.save();
    if (clipsToBounds)
        painter.setClipPath(shape);
    // A pressed button dims its content, as a finger on it would expect.
    if (down)
        painter.setOpacity(painter.opacity() * 0.5);
    const QImage image = currentImage();
    if (!image.isNull())
        painter.drawImage(fittedRect(image, bounds), image);
    if (!title.isEmpty()) {
        painter.setFont(font);
        painter.setPen(titleColor);
        painter.drawText(bounds, Qt::AlignCenter, title);
    }
    painter.restore();
    if (borderWidth > 0.0 && paints(borderColor)) {
        const double half = borderWidth * 0.5;
        painter.setPen(QPen(borderColor, borderWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(
            roundedShape(bounds.adjusted(half, half, -half, -half), cornerRadius - half));
    }
    if (paints(markColor)) {
        const double inset = -3.0; // a 2-point gap, then a 2-point ring
        painter.setPen(QPen(markColor, 2.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(
            roundedShape(bounds.adjusted(inset, inset, -inset, -inset), cornerRadius - inset));
    }
}

void DoodleTile::paintFocusRing(QPainter &painter, const QRectF &area, const QColor &highlight)
{
    const QRectF bounds = area.adjusted(1, 1, -1, -1);
    painter.setOpacity(1.0);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(highlight, 2.0));
    painter.drawRoundedRect(bounds, 4, 4);
    painter.setPen(QPen(Qt::white, 1.0));
    painter.drawRoundedRect(bounds.adjusted(1.5, 1.5, -1.5, -1.5), 3, 3);
}
