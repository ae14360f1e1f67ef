#include "DoodleSurface.h"

#include "DoodleDrawInput.h"

#include <doodle/support/DoodleLog_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace {
// Room for antialiased edge pixels around every repainted shape.
constexpr double kAntialiasMargin = 1.0;
// Joins stay mitred down to about 11.5 degrees (a miter length of ten widths).
constexpr double kMiterLimit = 5.0;
// Pens up to one device pixel wide take the raster engine's hairline path,
// whose pixels depend on the clip; wider pens and fills do not.
constexpr double kHairlinePixels = 1.05;

QColor orBlack(const QColor &color)
{
    return color.isValid() ? color : QColor(Qt::black);
}

// Qt's raster engine hands a smooth fill of more spans than this to its own
// helper threads and waits for them; those compete with the redraw worker, so
// a stretched picture is drawn in strips of at most this many device rows,
// which the GUI thread fills alone.
constexpr int kStretchStripRows = 64;

// Draws `image` stretched over `target`, smoothly, inside `within` (all in the
// painter's points).
void drawStretched(QPainter &painter, const QRectF &target, const QImage &image,
                   const QRectF &within)
{
    const QRectF area = within & target;
    if (area.isEmpty())
        return;
    const double ratio = std::max(1.0, painter.device()->devicePixelRatioF());
    const double strip = kStretchStripRows / ratio;
    for (double top = area.top(); top < area.bottom(); top += strip) {
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setClipRect(QRectF(area.left(), top, area.width(), strip), Qt::IntersectClip);
        painter.drawImage(target, image);
        painter.restore();
    }
}

QRectF grown(const QRectF &rect, double radius)
{
    const double margin = radius + kAntialiasMargin;
    return rect.normalized().adjusted(-margin, -margin, margin, margin);
}

void logSkipped(const char *primitive, const QString &reason)
{
    DOODLE_LOG(QStringLiteral("%1 skipped: %2").arg(QLatin1String(primitive), reason));
}

// The width to draw with, or none (and a log line) when the geometry is not
// finite or the width is unusable.
std::optional<double> checkedWidth(const char *primitive, double width, const QPointF &anchor,
                                   const QSizeF &bounds, bool finite)
{
    if (!finite) {
        logSkipped(primitive, QStringLiteral("coordinates not finite"));
        return std::nullopt;
    }
    const auto usable = DoodleDrawInput::lineWidth(width, anchor, bounds);
    if (!usable)
        logSkipped(primitive, QStringLiteral("width %1").arg(DoodleNumber::printfF(width)));
    return usable;
}

// Device pixels per point where the painter draws: the scale of the picture
// being made (a snapshot paints through the widget, whose own ratio is the
// screen's), or 0 when its transform turns or skews.
double deviceScale(const QPainter &painter)
{
    const QTransform toDevice = painter.deviceTransform();
    if (toDevice.type() > QTransform::TxScale || !qFuzzyCompare(toDevice.m11(), toDevice.m22()))
        return 0;
    return toDevice.m11();
}

QPointF firstPoint(const QPainterPath &path)
{
    return path.elementCount() > 0 ? QPointF(path.elementAt(0)) : QPointF();
}
} // namespace

double DoodleSurface::scale() const
{
    return m_scale > 0 ? m_scale : DoodleScreen::scale();
}

void DoodleSurface::setHost(SizeSource size, ChangeSink changed, ReplaceSink replaced)
{
    m_sizeSource = std::move(size);
    m_changeSink = std::move(changed);
    m_replaceSink = std::move(replaced);
}

void DoodleSurface::changed(const QRect &area) const
{
    if (m_changeSink && !area.isEmpty())
        m_changeSink(area);
}

void DoodleSurface::setPicture(const QImage &image)
{
    m_cacheImage = image;
    m_paintedRect = image.isNull() ? QRect() : rect();
    if (m_replaceSink)
        m_replaceSink();
    else
        changed(rect());
}

// Makes the picture match the surface's size at the screen scale. When it
// already does, primitives paint straight into it; otherwise the old picture
// is stretched into a fresh one.
bool DoodleSurface::preparePicture()
{
    const QSize bounds = size();
    if (bounds.isEmpty())
        return false;
    const double scale = this->scale();
    const QSize pixels = (QSizeF(bounds) * scale).toSize();
    if (m_cacheImage.size() == pixels && m_cacheImage.devicePixelRatio() == scale &&
        m_cacheImage.format() == QImage::Format_ARGB32_Premultiplied)
        return true;
    QImage fresh(pixels, QImage::Format_ARGB32_Premultiplied);
    if (fresh.isNull())
        return false;
    fresh.setDevicePixelRatio(scale);
    fresh.fill(Qt::transparent);
    if (!m_cacheImage.isNull()) {
        QPainter painter(&fresh);
        drawStretched(painter, QRectF(rect()), m_cacheImage, QRectF(rect()));
        m_paintedRect = rect();
    }
    m_cacheImage = std::move(fresh);
    return true;
}

void DoodleSurface::clear(bool release)
{
    if (m_cacheImage.isNull())
        return;
    // A picture of another size shows stretched over the whole surface.
    const bool fits = m_cacheImage.deviceIndependentSize() == QSizeF(size());
    changed(fits ? m_paintedRect : rect());
    if (release || !fits) {
        m_cacheImage = QImage();
    } else if (!m_paintedRect.isEmpty()) {
        QPainter painter(&m_cacheImage);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(m_paintedRect, Qt::transparent);
    }
    m_paintedRect = QRect();
}

// Whether a shape outlined with this pen (none for a fill) gives the same
// pixels inside a clip as drawn whole.
bool DoodleSurface::clipsExactly(std::optional<double> penWidth) const
{
    return !penWidth || *penWidth * scale() > kHairlinePixels;
}

template <typename Draw>
void DoodleSurface::paintShape(const QRectF &dirty, std::optional<double> penWidth, Draw draw)
{
    m_lastPainted = QRect();
    const QRect area = (dirty & QRectF(rect())).toAlignedRect();
    if (m_measuring) {
        m_lastPainted = area;
        return;
    }
    if (m_target) {
        if (!area.isEmpty() && m_target->size() == m_cacheImage.size()) {
            QPainter painter(m_target);
            painter.setRenderHint(QPainter::Antialiasing);
            draw(painter);
        }
        return;
    }
    const bool redirected = !m_region.isNull();
    if (area.isEmpty() || (redirected && !area.intersects(m_region)) || !preparePicture())
        return;
    {
        QPainter painter(redirected ? &m_scratch : &m_cacheImage);
        painter.setRenderHint(QPainter::Antialiasing);
        // In a region redraw only the region's pixels are kept: a clip spares
        // the rest of the shape where that leaves the region's pixels as they are.
        if (redirected && clipsExactly(penWidth))
            painter.setClipRect(m_region);
        draw(painter);
    }
    m_lastPainted = area;
    if (redirected)
        return;
    m_paintedRect |= area;
    changed(area);
}

// The picture's pixels that the rectangle in view points touches.
QRect DoodleSurface::devicePixels(const QRect &area) const
{
    const double ratio = m_cacheImage.devicePixelRatio();
    const QRectF scaled(QPointF(area.topLeft()) * ratio, QSizeF(area.size()) * ratio);
    return scaled.toAlignedRect() & m_cacheImage.rect();
}

void DoodleSurface::beginRegionRedraw(const QRect &region, const QImage &base)
{
    m_region = region & rect();
    if (m_region.isEmpty() || !preparePicture()) {
        m_region = QRect();
        return;
    }
    if (m_scratch.size() != m_cacheImage.size() ||
        m_scratch.devicePixelRatio() != m_cacheImage.devicePixelRatio()) {
        m_scratch = QImage(m_cacheImage.size(), m_cacheImage.format());
        m_scratch.setDevicePixelRatio(m_cacheImage.devicePixelRatio());
    }
    const QRect pixels = devicePixels(m_region);
    const bool based = base.size() == m_scratch.size() && base.format() == m_scratch.format();
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        QRgb *row = reinterpret_cast<QRgb *>(m_scratch.scanLine(y)) + pixels.left();
        if (based)
            std::copy_n(reinterpret_cast<const QRgb *>(base.constScanLine(y)) + pixels.left(),
                        pixels.width(), row);
        else
            std::fill_n(row, pixels.width(), QRgb(0));
    }
}

void DoodleSurface::copyPicture(QImage &target) const
{
    if (m_cacheImage.isNull()) {
        target = QImage();
    } else if (target.size() == m_cacheImage.size() && target.format() == m_cacheImage.format() &&
               target.bytesPerLine() == m_cacheImage.bytesPerLine()) {
        std::copy_n(m_cacheImage.constBits(), m_cacheImage.sizeInBytes(), target.bits());
        target.setDevicePixelRatio(m_cacheImage.devicePixelRatio());
    } else {
        target = m_cacheImage.copy();
    }
}

bool DoodleSurface::copyRegionTo(QImage &target) const
{
    if (m_region.isNull() || target.size() != m_scratch.size() ||
        target.format() != m_scratch.format())
        return false;
    const QRect pixels = devicePixels(m_region);
    for (int y = pixels.top(); y <= pixels.bottom(); ++y)
        std::copy_n(reinterpret_cast<const QRgb *>(m_scratch.constScanLine(y)) + pixels.left(),
                    pixels.width(), reinterpret_cast<QRgb *>(target.scanLine(y)) + pixels.left());
    return true;
}

void DoodleSurface::endRegionRedraw()
{
    if (m_region.isNull())
        return;
    // Copied pixel for pixel: no painter, so no resampling at any scale.
    const QRect pixels = devicePixels(m_region);
    for (int y = pixels.top(); y <= pixels.bottom(); ++y)
        std::copy_n(reinterpret_cast<const QRgb *>(m_scratch.constScanLine(y)) + pixels.left(),
                    pixels.width(),
                    reinterpret_cast<QRgb *>(m_cacheImage.scanLine(y)) + pixels.left());
    m_paintedRect |= m_region;
    changed(m_region);
    m_region = QRect();
}

void DoodleSurface::strokePath(const QPainterPath &given, double width, const QColor &color,
                               bool erase, bool dot)
{
    const char *name = erase ? "eraseInCacheWithPath" : "drawInCacheWithPath";
    const QPainterPath path = DoodleDrawInput::bounded(given);
    const auto usable =
        checkedWidth(name, width, firstPoint(path), size(), DoodleDrawInput::isFinite(path));
    if (!usable)
        return;
    const QPen pen(orBlack(color), *usable, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    // A stroke that reaches every corner is the whole surface, and filling it
    // costs far less than stroking a path that wide.
    const bool covers =
        !path.isEmpty() && *usable >= DoodleDrawInput::coveringWidth(firstPoint(path), size());
    const QRectF extent = dot ? QRectF(firstPoint(path), QSizeF(0, 0)) : path.controlPointRect();
    const std::optional<double> outline = covers || dot ? std::nullopt : usable;
    paintShape(grown(extent, *usable / 2), outline, [&](QPainter &painter) {
        if (erase)
            painter.setCompositionMode(QPainter::CompositionMode_Clear);
        if (covers) {
            painter.fillRect(rect(), pen.color());
        } else if (dot) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(pen.color());
            painter.drawEllipse(extent.topLeft(), *usable / 2, *usable / 2);
        } else {
            painter.strokePath(path, pen);
        }
    });
}

void DoodleSurface::drawPath(const QPainterPath &path, double width, const QColor &color)
{
    strokePath(path, width, color, false, false);
}

void DoodleSurface::drawDot(const QPointF &point, double width, const QColor &color, bool erase)
{
    strokePath(QPainterPath(point), width, color, erase, true);
}

void DoodleSurface::erasePath(const QPainterPath &path, double width)
{
    strokePath(path, width, Qt::black, true, false);
}

void DoodleSurface::drawRectangle(const QRectF &given, double width, const QColor &color)
{
    const QRectF rect = DoodleDrawInput::bounded(given);
    const auto usable = checkedWidth("rectangleInCacheWithRect", width, rect.topLeft(), size(),
                                     DoodleDrawInput::isFinite(rect));
    if (!usable)
        return;
    // Past the limit a corner is bevelled, not cut at the limit: a rectangle
    // of zero height is a line exactly as long as its drag.
    QPen pen(orBlack(color), *usable, Qt::SolidLine, Qt::FlatCap, Qt::SvgMiterJoin);
    pen.setMiterLimit(kMiterLimit);
    // A right-angled miter reaches width / sqrt(2) beyond the corner.
    paintShape(grown(rect, *usable), usable, [&](QPainter &painter) {
        painter.setPen(pen);
        painter.drawRect(rect.normalized());
    });
}

void DoodleSurface::drawEllipse(const QRectF &given, double width, const QColor &color)
{
    const QRectF rect = DoodleDrawInput::bounded(given);
    const QPointF anchor(rect.right(), rect.center().y());
    const auto usable = checkedWidth("ellipseInCacheWithRect", width, anchor, size(),
                                     DoodleDrawInput::isFinite(rect));
    if (!usable)
        return;
    const QPen pen(orBlack(color), *usable, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    // When half the width reaches the shorter semi-axis, the stroke covers
    // the whole inside; the outline's inner edge would fold over and leave a
    // hole, so fill the outer edge instead.
    const QRectF box = rect.normalized();
    const bool filled = *usable > 0 && *usable >= std::min(box.width(), box.height());
    paintShape(grown(rect, *usable / 2), filled ? std::nullopt : usable, [&](QPainter &painter) {
        if (filled) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(pen.color());
            painter.drawPolygon(DoodleDrawInput::ellipseOuterEdge(box, *usable / 2));
            return;
        }
        painter.setPen(pen);
        painter.drawEllipse(box);
    });
}

void DoodleSurface::drawArrow(const QPointF &givenStart, const QPointF &givenEnd, double width,
                              const QColor &color)
{
    const QPointF start = DoodleDrawInput::bounded(givenStart);
    const QPointF end = DoodleDrawInput::bounded(givenEnd);
    const bool finite = DoodleDrawInput::isFinite(start) && DoodleDrawInput::isFinite(end);
    const auto usable = checkedWidth("arrowInCacheWithStartPoint", width, end, size(), finite);
    if (!usable)
        return;
    const double w = *usable;
    const auto path = DoodleDrawInput::arrowPath(start, end, w);
    if (!path) {
        logSkipped("arrowInCacheWithStartPoint", QStringLiteral("no direction from start to end"));
        return;
    }
    QPen pen(orBlack(color), w, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(kMiterLimit);
    // The apex's miter reaches about 1.12w beyond the end point.
    paintShape(grown(path->controlPointRect(), 1.5 * w), usable, [&](QPainter &painter) {
        painter.setPen(pen);
        painter.setBrush(pen.color());
        painter.drawPath(*path);
    });
}

void DoodleSurface::drawText(const QPointF &point, const QString &text, double textSize,
                             const QColor &color)
{
    DOODLE_LOG(QStringLiteral("textInCacheWithStartPoint %1,%2,%3")
                   .arg(DoodleNumber::pointText(point), text, DoodleNumber::printfF(textSize)));
    const auto pixelSize = DoodleDrawInput::textSize(textSize, size());
    if (!pixelSize || !DoodleDrawInput::isFinite(point)) {
        logSkipped("textInCacheWithStartPoint", QStringLiteral("no finite position and size"));
        return;
    }
    const double px = *pixelSize;
    const QString shown = DoodleDrawInput::visibleText(text, point.x(), size().width(), px);
    // The line box spans about 1.2 sizes below the point; one size of slack
    // on either side takes in overhanging glyphs.
    const QRectF dirty(QPointF(point.x() - px, point.y() - px),
                       QPointF(size().width(), point.y() + 3 * px));
    paintShape(dirty, std::nullopt, [&](QPainter &painter) {
        // Filled as outlines, not through the font engine's glyph cache: a
        // cached glyph may be drawn another way once the cache is full, and a
        // text must give the same pixels whenever it is drawn again.
        const QFont font = DoodleDrawInput::systemFont(px);
        const QFontMetricsF metrics(font, painter.device());
        QPainterPath outline;
        outline.addText(QPointF(point.x(), point.y() + metrics.ascent()), font, shown);
        painter.fillPath(outline, orBlack(color));
    });
}

void DoodleSurface::drawImage(const QImage &image, const QRectF &rect)
{
    if (!DoodleDrawInput::isFinite(rect)) {
        logSkipped("drawImage", QStringLiteral("coordinates not finite"));
        return;
    }
    if (image.isNull())
        return;
    // Drawn whole: a scaled image's pixels are not promised to be clip-free.
    paintShape(grown(rect, 0.0), 0.0, [&](QPainter &painter) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(rect, image);
    });
}

void DoodleSurface::paint(QPainter &painter, const QRect &dirty) const
{
    if (m_cacheImage.isNull())
        return;
    if (m_cacheImage.deviceIndependentSize() == QSizeF(size())) {
        const double ratio = m_cacheImage.devicePixelRatio();
        const QRectF source(QPointF(dirty.topLeft()) * ratio, QSizeF(dirty.size()) * ratio);
        const double deviceRatio = deviceScale(painter);
        if (deviceRatio <= 0 || qFuzzyCompare(deviceRatio, ratio)) {
            // Copy only the changed rectangle, pixel for pixel.
            painter.drawImage(QRectF(dirty), m_cacheImage, source);
            return;
        }
        // On a device of another scale (a second screen, a snapshot at scale 1)
        // every device pixel averages the picture's pixels it covers.
        QImage part = m_cacheImage.copy(source.toAlignedRect())
                          .scaled((QSizeF(dirty.size()) * deviceRatio).toSize(),
                                  Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        part.setDevicePixelRatio(deviceRatio);
        painter.drawImage(dirty.topLeft(), part);
        return;
    }
    // A picture composed at an older size is shown stretched to the bounds.
    drawStretched(painter, QRectF(rect()), m_cacheImage, QRectF(dirty));
}
