// The Quick board's input: pointer events become the core's gestures in the
// board's coordinates, as the Widgets board's view hands them on. A stylus
// that hovers sends hover events, which the item does not take: it draws
// only while it touches.
#include "DoodleBoard.h"
#include "DoodleBoard_p.h"
#include "DoodleQuickChrome_p.h"

#include <QEventPoint>
#include <QMouseEvent>
#include <QTouchEvent>

namespace {

enum class Phase
{
    Began,
    Moved,
    Ended,
    Cancelled
};

void deliver(DoodleBoardPrivate &d, Phase phase, const QPointF &itemPoint)
{
    // In the board's coordinates: with an aspect the board sits inside margins.
    const QPointF point = itemPoint - QPointF(d.frame().topLeft());
    const DoodleTouch touch{point, d.m_touching ? d.m_lastPoint : point};
    d.m_lastPoint = point;
    switch (phase) {
    case Phase::Began:
        // A gesture on the board closes an open picker.
        if (d.m_chrome)
            d.m_chrome->closePicker();
        d.m_touching = true;
        d.gestureBegan(touch);
        break;
    case Phase::Moved:
        if (d.m_touching)
            d.gestureMoved(touch);
        break;
    case Phase::Ended:
        if (d.m_touching)
            d.gestureEnded(touch);
        d.m_touching = false;
        break;
    case Phase::Cancelled:
        if (d.m_touching)
            d.gestureCancelled(touch);
        d.m_touching = false;
        break;
    }
}

} // namespace

void DoodleBoard::mousePressEvent(QMouseEvent *event)
{
    if (!d->m_editable || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    forceActiveFocus(Qt::MouseFocusReason);
    deliver(*d, Phase::Began, event->position());
}

void DoodleBoard::mouseMoveEvent(QMouseEvent *event)
{
    deliver(*d, Phase::Moved, event->position());
}

void DoodleBoard::mouseReleaseEvent(QMouseEvent *event)
{
    deliver(*d, Phase::Ended, event->position());
}

void DoodleBoard::mouseUngrabEvent()
{
    // The grab was taken away (a flick, a popup): the gesture is cancelled.
    deliver(*d, Phase::Cancelled, d->m_lastPoint + QPointF(d->frame().topLeft()));
}

void DoodleBoard::touchEvent(QTouchEvent *event)
{
    // One finger draws; the first point of the event is the one followed.
    if (!d->m_editable || event->points().isEmpty()) {
        event->ignore();
        return;
    }
    const QEventPoint &point = event->points().first();
    switch (event->type()) {
    case QEvent::TouchBegin:
        deliver(*d, Phase::Began, point.position());
        break;
    case QEvent::TouchUpdate:
        deliver(*d, Phase::Moved, point.position());
        break;
    case QEvent::TouchEnd:
        deliver(*d, Phase::Ended, point.position());
        break;
    case QEvent::TouchCancel:
        deliver(*d, Phase::Cancelled, d->m_lastPoint + QPointF(d->frame().topLeft()));
        break;
    default:
        break;
    }
    event->accept();
}
