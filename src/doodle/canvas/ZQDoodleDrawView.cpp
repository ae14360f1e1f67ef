#include "ZQDoodleDrawView.h"

#include <QChildEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>

#include <algorithm>

namespace {

// A whole new picture (a redraw swapped in) of at least this many device
// pixels is repainted in this many bands, one per turn of the event loop, so
// that no single repaint of a large board holds the GUI thread long.
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
                      [this] { showNewPicture(); });
}

void ZQDoodleDrawView::showNewPicture()
{
    const double ratio = devicePixelRatioF();
    if (width() * height() * ratio * ratio < kBandFromPixels) {
        update();
        return;
    }
    // A sequence under way starts again from the top with the newer picture.
    const bool underWay = m_bandsLeft > 0;
    m_bandsLeft = kBands;
    if (!underWay)
        showNextBand();
}

void ZQDoodleDrawView::showNextBand()
{
    const int band = kBands - m_bandsLeft--;
    const int top = height() * band / kBands;
    update(0, top, width(), height() * (band + 1) / kBands - top);
    if (m_bandsLeft > 0)
        QTimer::singleShot(0, this, &ZQDoodleDrawView::showNextBand);
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
    QPainter painter(this);
    m_surface.paint(painter, event->rect());
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
