#include "ZQDoodleDrawView.h"

#include <QChildEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>

#include <algorithm>

namespace {

// A whole picture of at least this many device pixels (a redraw swapped in,
// or the previous one stretched to a new size) is repainted in this many
// bands, one per turn of the event loop, so that no single repaint of a large
// board holds the GUI thread long.
constexpr double kBandFromPixels = 1 << 20;
constexpr int kBands = 4;

} // namespace

ZQDoodleDrawView::ZQDoodleDrawView(QWidget *parent) : QWidget(parent)
{
    // A surface shows pixels only; input passes to the widgets around it
    // until it holds a child widget such as a text field (see childEvent).
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    m_surface.setHost([this] { return size(); }, [this](const QRect &area) { update(area); },
                      [this] { showInBands(); });
    m_nextBand.setSingleShot(true);
    m_nextBand.setInterval(0);
    connect(&m_nextBand, &QTimer::timeout, this, &ZQDoodleDrawView::showNextBand);
}

void ZQDoodleDrawView::showInBands()
{
    const double ratio = devicePixelRatioF();
    if (width() * height() * ratio * ratio < kBandFromPixels) {
        update();
        return;
    }
    // A sequence under way starts again from the top with the newer picture.
    m_bandsLeft = kBands;
    showNextBand();
}

void ZQDoodleDrawView::showNextBand()
{
    if (m_bandsLeft <= 0)
        return;
    const int band = kBands - m_bandsLeft--;
    const int top = height() * band / kBands;
    update(0, top, width(), height() * (band + 1) / kBands - top);
    if (m_bandsLeft > 0)
        m_nextBand.start();
}

// The rows the bands shown so far cover; all of them when none is to come.
int ZQDoodleDrawView::shownDownTo() const
{
    return m_bandsLeft > 0 ? height() * (kBands - m_bandsLeft) / kBands : height();
}

void ZQDoodleDrawView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // The previous picture shows stretched until the one composed at this
    // size arrives; Qt repaints the whole widget, but the stretch comes a
    // band at a time as a new picture does.
    if (m_surface.isStretched())
        showInBands();
}

void ZQDoodleDrawView::setCacheImage(const QImage &image)
{
    m_surface.setPicture(image);
}

void ZQDoodleDrawView::drawInCacheWithPath(const QPainterPath &path, double width,
                                           const QColor &color)
{
    m_surface.drawPath(path, width, color);
}

void ZQDoodleDrawView::dotInCacheWithPoint(const QPointF &point, double width, const QColor &color,
                                           bool erase)
{
    m_surface.drawDot(point, width, color, erase);
}

void ZQDoodleDrawView::drawInTempWithPath(const QPainterPath &path, double width,
                                          const QColor &color)
{
    // Emptying keeps the buffer: the next stroke reuses it at once.
    m_surface.clear(false);
    m_surface.drawPath(path, width, color);
}

void ZQDoodleDrawView::eraseInCacheWithPath(const QPainterPath &path, double width)
{
    m_surface.erasePath(path, width);
}

void ZQDoodleDrawView::rectangleInCacheWithRect(const QRectF &rect, double width,
                                                const QColor &color)
{
    m_surface.drawRectangle(rect, width, color);
}

void ZQDoodleDrawView::ellipseInCacheWithRect(const QRectF &rect, double width, const QColor &color)
{
    m_surface.drawEllipse(rect, width, color);
}

void ZQDoodleDrawView::arrowInCacheWithStartPoint(const QPointF &start, const QPointF &end,
                                                  double width, const QColor &color)
{
    m_surface.drawArrow(start, end, width, color);
}

void ZQDoodleDrawView::textInCacheWithStartPoint(const QPointF &point, const QString &text,
                                                 double textSize, const QColor &color)
{
    m_surface.drawText(point, text, textSize, color);
}

void ZQDoodleDrawView::drawImage(const QImage &image, const QRectF &rect)
{
    m_surface.drawImage(image, rect);
}

void ZQDoodleDrawView::cleanAllPath()
{
    m_surface.clear(true);
    removeChildWidgets();
}

void ZQDoodleDrawView::cleanForRedraw()
{
    m_surface.clear(false);
    removeChildWidgets();
}

void ZQDoodleDrawView::beginRegionRedraw(const QRect &region, const QImage &base)
{
    m_surface.beginRegionRedraw(region, base);
}

void ZQDoodleDrawView::endRegionRedraw()
{
    m_surface.endRegionRedraw();
}

bool ZQDoodleDrawView::copyRegionTo(QImage &target) const
{
    return m_surface.copyRegionTo(target);
}

void ZQDoodleDrawView::copyPicture(QImage &target) const
{
    m_surface.copyPicture(target);
}

void ZQDoodleDrawView::removeChildWidgets()
{
    const auto widgets = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *child : widgets) {
        // Deferred: the child may be the sender of the signal that led here.
        child->hide();
        child->setParent(nullptr);
        child->deleteLater();
    }
}

void ZQDoodleDrawView::paintEvent(QPaintEvent *event)
{
    if (m_surface.picture().isNull())
        return;
    QRect dirty = event->rect();
    if (m_surface.isStretched())
        dirty &= QRect(0, 0, width(), shownDownTo());
    if (dirty.isEmpty())
        return;
    QPainter painter(this);
    m_surface.paint(painter, dirty);
}

void ZQDoodleDrawView::childEvent(QChildEvent *event)
{
    QWidget::childEvent(event);
    if (!event->added() && !event->removed())
        return;
    const QObjectList &all = children();
    const bool holdsWidget = std::any_of(
        all.begin(), all.end(), [](const QObject *child) { return child->isWidgetType(); });
    // A child widget (the text field) must get clicks; the surface passes on
    // the ones it does not handle to the board beneath.
    setAttribute(Qt::WA_TransparentForMouseEvents, !holdsWidget);
}
