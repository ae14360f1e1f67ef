#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

#include <QMouseEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QTabletEvent>
#include <QTouchEvent>

DoodleLayoutView::DoodleLayoutView(DoodleLayout *controller) : m_controller(controller)
{
    setAttribute(Qt::WA_AcceptTouchEvents);
}

void DoodleLayoutView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (event->oldSize() != event->size())
        m_controller->d->viewDidLayout();
}

void DoodleLayoutView::paintEvent(QPaintEvent *)
{
    // Letterbox margins, tinted so that the board's own shape shows.
    const QRect board = m_controller->d->boardFrame();
    if (board == rect())
        return;
    QPainter painter(this);
    const QRegion margins = QRegion(rect()).subtracted(board);
    for (const QRect &margin : margins)
        painter.fillRect(margin, QColor(0, 0, 0, 64));
}

void DoodleLayoutView::deliver(Phase phase, const QPointF &viewPosition)
{
    ZQDoodleView *board = m_controller->doodleView();
    const QPointF location = board->mapFrom(this, viewPosition);
    const DoodleTouch touch{location, phase == Phase::Began ? location : m_lastLocation};
    m_lastLocation = location;
    m_pressed = phase == Phase::Began || phase == Phase::Moved;
    switch (phase) {
    case Phase::Began:
        m_controller->touchesBegan(touch);
        break;
    case Phase::Moved:
        m_controller->touchesMoved(touch);
        break;
    case Phase::Ended:
        m_controller->touchesEnded(touch);
        break;
    case Phase::Cancelled:
        m_controller->touchesCancelled(touch);
        break;
    }
}

void DoodleLayoutView::cancelGesture()
{
    if (m_pressed)
        deliver(Phase::Cancelled, m_controller->doodleView()->mapTo(this, m_lastLocation));
}

bool DoodleLayoutView::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return handleTouch(static_cast<QTouchEvent *>(event));
    case QEvent::UngrabMouse:
    case QEvent::WindowDeactivate:
        // The platform took the gesture away: a grab lost or the window lost focus.
        cancelGesture();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

bool DoodleLayoutView::handleTouch(QTouchEvent *event)
{
    event->accept();
    if (event->type() == QEvent::TouchCancel) {
        cancelGesture();
        return true;
    }
    if (event->points().isEmpty())
        return true;
    const QEventPoint &point = event->points().first();
    if (event->type() == QEvent::TouchBegin)
        deliver(Phase::Began, point.position());
    else if (point.state() == QEventPoint::Released || event->type() == QEvent::TouchEnd)
        deliver(Phase::Ended, point.position());
    else if (point.state() == QEventPoint::Updated)
        deliver(Phase::Moved, point.position());
    return true;
}

void DoodleLayoutView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && !m_pressed)
        deliver(Phase::Began, event->position());
}

void DoodleLayoutView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_pressed && (event->buttons() & Qt::LeftButton))
        deliver(Phase::Moved, event->position());
}

void DoodleLayoutView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_pressed && event->button() == Qt::LeftButton)
        deliver(Phase::Ended, event->position());
}

void DoodleLayoutView::tabletEvent(QTabletEvent *event)
{
    event->accept();
    if (event->type() == QEvent::TabletPress && !m_pressed)
        deliver(Phase::Began, event->position());
    else if (event->type() == QEvent::TabletMove && m_pressed)
        deliver(Phase::Moved, event->position());
    else if (event->type() == QEvent::TabletRelease && m_pressed)
        deliver(Phase::Ended, event->position());
}
