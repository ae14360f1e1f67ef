// Board controller: the local user's gestures become a live preview, a
// permanent drawing and one action per finished gesture.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

#include <QLineEdit>

#include <cmath>

namespace {

constexpr qint32 kTimeInterval = 2; // every locally captured point carries it

bool samePoint(const QPointF &a, const QPointF &b)
{
    return a.x() == b.x() && a.y() == b.y(); // exact, unlike QPointF's fuzzy ==
}

} // namespace

DoodleGestureTool DoodleLayoutPrivate::toolForMode(qint64 mode) const
{
    switch (mode) {
    case DoodleActionModeEraser:
        return {mode, m_eraserWidth, m_brushColor};
    case DoodleActionModeText:
        return {mode, m_textSize, m_brushColor};
    default:
        return {mode, m_brushWidth, m_brushColor};
    }
}

bool DoodleLayoutPrivate::isOnBoard(const QPointF &point) const
{
    // The board's frame (its place in the controller's view) against a point in
    // the board's own coordinates: the two agree while the board sits at (0, 0).
    if (!m_doodleView)
        return false;
    const QRectF frame = m_doodleView->geometry();
    return point.x() >= frame.left() && point.x() < frame.left() + frame.width() &&
           point.y() >= frame.top() && point.y() < frame.top() + frame.height();
}

void DoodleLayoutPrivate::stampAction(qint64 type)
{
    if (!m_doodleDraw)
        m_doodleDraw = std::make_shared<DoodleAction>();
    m_doodleDraw->setActionType(type);
    m_doodleDraw->setUserId(m_userId);
    m_doodleDraw->setBrushColor(m_gesture.color);
}

void DoodleLayoutPrivate::commitAction()
{
    // The host hears of the action before the cache records it.
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onDoodleActionGenerated(m_doodleDraw);
    m_doodlePathCache.addAction(m_doodleDraw);
    m_doodleDraw.reset();
}

void DoodleLayout::touchesBegan(const DoodleTouch &touch)
{
    if (d->m_isMinToolBar)
        return;
    d->m_gesture = d->toolForMode(d->m_actionMode);
    d->closePickers();
    const QPointF p = touch.location;
    if (!d->isOnBoard(p))
        return;
    switch (d->m_gesture.mode) {
    case DoodleActionModeBrush:
    case DoodleActionModeEraser:
        d->beginStroke(p);
        break;
    case DoodleActionModeRectangle:
    case DoodleActionModeEllipse:
        d->beginBox(p);
        break;
    case DoodleActionModeArrow:
        d->beginArrow(p);
        break;
    default:
        return; // text starts when the touch ends
    }
    d->m_drawPathDidMoved = false;
}

void DoodleLayoutPrivate::beginStroke(const QPointF &point)
{
    if (!m_hasPath) {
        m_path = QPainterPath(point);
        m_hasPath = true;
    }
    m_strokeEnd = m_path.currentPosition();
    const bool pen = m_gesture.mode == DoodleActionModeBrush;
    stampAction(pen ? DoodleActionTypeStroke : DoodleActionTypeEraser);
    m_doodleDraw->setBrushWidth(float(q->logicFromNormalWidth(m_gesture.width)));
    const QPointF logic = q->logicFromNormal(point);
    m_doodleDraw->addPointWithPositionX(float(logic.x()), float(logic.y()), kTimeInterval);
}

void DoodleLayoutPrivate::beginBox(const QPointF &point)
{
    if (m_rectIsNull || m_rect.width() == 0 || m_rect.height() == 0) {
        m_rect = QRectF(point, QSizeF(0, 0));
        m_rectIsNull = false;
    }
    const bool rectangle = m_gesture.mode == DoodleActionModeRectangle;
    stampAction(rectangle ? DoodleActionTypeRectangle : DoodleActionTypeEllipse);
    m_doodleDraw->setBrushWidth(float(q->logicFromNormalWidth(m_gesture.width)));
    const QPointF logic = q->logicFromNormal(point);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
    m_doodleDraw->setWidth(0);
    m_doodleDraw->setHeight(0);
}

void DoodleLayoutPrivate::beginArrow(const QPointF &point)
{
    if (m_startPoint.x() == 0)
        m_startPoint = point;
    stampAction(DoodleActionTypeArrow);
    m_doodleDraw->setBrushWidth(float(q->logicFromNormalWidth(m_gesture.width)));
    const QPointF logic = q->logicFromNormal(point);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
}

void DoodleLayout::touchesMoved(const DoodleTouch &touch)
{
    if (d->m_isMinToolBar)
        return;
    QPointF p = touch.location;
    QPointF q = touch.previousLocation;
    if (!d->isOnBoard(q)) {
        q = limitTouchPoint(q, d->m_doodleView);
        p = limitTouchPoint(p, d->m_doodleView);
    }
    if (samePoint(p, q))
        return;
    if (!d->isOnBoard(p)) {
        d->finishStrokeOffBoard(q);
        return;
    }
    const QPointF mid((q.x() + p.x()) * 0.5, (q.y() + p.y()) * 0.5);
    switch (d->m_gesture.mode) {
    case DoodleActionModeBrush:
    case DoodleActionModeEraser:
        d->moveStroke(q, mid, p);
        break;
    case DoodleActionModeRectangle:
    case DoodleActionModeEllipse:
        d->moveBox(mid);
        break;
    case DoodleActionModeArrow:
        d->moveArrow(mid);
        break;
    default:
        break;
    }
}

void DoodleLayoutPrivate::moveStroke(const QPointF &control, const QPointF &mid,
                                     const QPointF &point)
{
    if (m_hasPath) {
        m_path.quadTo(control, mid);
        // Only the new segment is drawn: the preview (and the eraser's live
        // erasing) costs the same per move however long the stroke grows.
        QPainterPath segment(m_strokeEnd);
        segment.quadTo(control, mid);
        m_strokeEnd = mid;
        if (m_gesture.mode == DoodleActionModeBrush)
            q->doodleView()->drawInTempWithPath(segment, m_gesture.width, m_gesture.color);
        else
            q->doodleView()->eraseInCacheWithPath(segment, m_gesture.width);
        m_drawPathDidMoved = true;
    }
    if (m_doodleDraw) {
        const QPointF logic = q->logicFromNormal(point);
        m_doodleDraw->addPointWithPositionX(float(logic.x()), float(logic.y()), kTimeInterval);
    }
}

void DoodleLayoutPrivate::moveBox(const QPointF &mid)
{
    if (m_rectIsNull)
        return;
    m_rect.setSize(QSizeF(mid.x() - m_rect.x(), mid.y() - m_rect.y()));
    if (m_gesture.mode == DoodleActionModeRectangle)
        q->doodleView()->rectInTempWithPath(m_rect, m_gesture.width, m_gesture.color);
    else
        q->doodleView()->ellipseInTempWithPath(m_rect, m_gesture.width, m_gesture.color);
    m_drawPathDidMoved = true;
    if (m_doodleDraw) {
        m_doodleDraw->setWidth(float(q->logicFromNormalWidth(m_rect.width())));
        m_doodleDraw->setHeight(float(q->logicFromNormalHeight(m_rect.height())));
    }
}

void DoodleLayoutPrivate::moveArrow(const QPointF &mid)
{
    m_endPoint = mid;
    q->doodleView()->arrowInTempWithStartPoint(m_startPoint, mid, m_gesture.width, m_gesture.color);
    m_drawPathDidMoved = true;
    if (m_doodleDraw) {
        const QPointF logic = q->logicFromNormal(mid);
        m_doodleDraw->setEndX(float(logic.x()));
        m_doodleDraw->setEndY(float(logic.y()));
    }
}

void DoodleLayoutPrivate::finishStrokeOffBoard(const QPointF &previous)
{
    // The finger left the board: a stroke is committed at once; shapes wait.
    if (!m_hasPath)
        return;
    if (m_drawPathDidMoved) {
        m_path.quadTo(previous, previous);
        drawStrokePermanently();
        commitAction();
    }
    m_doodleDraw.reset();
    m_path = QPainterPath();
    m_hasPath = false;
}

void DoodleLayoutPrivate::drawStrokePermanently()
{
    if (m_gesture.mode == DoodleActionModeBrush)
        q->doodleView()->drawInCacheWithPath(m_path, m_gesture.width, m_gesture.color);
    else
        q->doodleView()->eraseInCacheWithPath(m_path, m_gesture.width);
}

QPointF DoodleLayoutPrivate::gestureEndPoint(const DoodleTouch &touch) const
{
    // Deliberately the previous location, pulled inside when off the board.
    const QPointF end = touch.previousLocation;
    return isOnBoard(end) ? end : q->limitTouchPoint(end, m_doodleView);
}

void DoodleLayout::touchesEnded(const DoodleTouch &touch)
{
    if (d->m_isMinToolBar || !(d->m_drawPathDidMoved || d->m_gesture.mode == DoodleActionModeText))
        return;
    d->finishGesture(d->gestureEndPoint(touch), false);
}

void DoodleLayout::touchesCancelled(const DoodleTouch &touch)
{
    // A cancelled gesture is committed, not discarded; shapes keep their raw size.
    if (!d->m_drawPathDidMoved)
        return;
    d->finishGesture(d->gestureEndPoint(touch), true);
}

void DoodleLayoutPrivate::finishGesture(const QPointF &end, bool cancelled)
{
    switch (m_gesture.mode) {
    case DoodleActionModeBrush:
    case DoodleActionModeEraser:
        endStroke(end);
        break;
    case DoodleActionModeRectangle:
    case DoodleActionModeEllipse:
        endBox(end, !cancelled);
        break;
    case DoodleActionModeArrow:
        if (!cancelled || m_endPoint.x() != 0)
            endArrow(end);
        break;
    case DoodleActionModeText:
        if (!cancelled)
            openTextEntry(end);
        break;
    default:
        break;
    }
}

void DoodleLayoutPrivate::endStroke(const QPointF &end)
{
    if (!m_hasPath)
        return;
    m_path.quadTo(end, end);
    drawStrokePermanently();
    commitAction();
    m_path = QPainterPath();
    m_hasPath = false;
}

void DoodleLayoutPrivate::endBox(const QPointF &end, bool normalise)
{
    if (m_rectIsNull)
        return;
    const QPointF origin = m_rect.topLeft();
    m_rect = normalise ? QRectF(std::min(origin.x(), end.x()), std::min(origin.y(), end.y()),
                                std::abs(end.x() - origin.x()), std::abs(end.y() - origin.y()))
                       : QRectF(origin, QSizeF(end.x() - origin.x(), end.y() - origin.y()));
    if (m_gesture.mode == DoodleActionModeRectangle)
        q->doodleView()->rectInCatchWithPath(m_rect, m_gesture.width, m_gesture.color);
    else
        q->doodleView()->ellipseInCatchWithPath(m_rect, m_gesture.width, m_gesture.color);
    if (m_doodleDraw) {
        if (normalise) {
            const QPointF logic = q->logicFromNormal(m_rect.topLeft());
            m_doodleDraw->setX(float(logic.x()));
            m_doodleDraw->setY(float(logic.y()));
        }
        m_doodleDraw->setWidth(float(q->logicFromNormalWidth(m_rect.width())));
        m_doodleDraw->setHeight(float(q->logicFromNormalHeight(m_rect.height())));
    }
    commitAction();
    m_drawPathDidMoved = false;
    m_rectIsNull = true;
}

void DoodleLayoutPrivate::endArrow(const QPointF &end)
{
    m_endPoint = end;
    q->doodleView()->arrowInCatchWithStartPoint(m_startPoint, end, m_gesture.width,
                                                m_gesture.color);
    if (m_doodleDraw) {
        const QPointF logic = q->logicFromNormal(end);
        m_doodleDraw->setEndX(float(logic.x()));
        m_doodleDraw->setEndY(float(logic.y()));
    }
    commitAction();
    m_drawPathDidMoved = false;
    m_startPoint = QPointF();
    m_endPoint = QPointF();
}

void DoodleLayoutPrivate::openTextEntry(const QPointF &end)
{
    m_startPoint = end;
    q->doodleView()->textInTempWithStartPoint(end, QString(), m_gesture.width, m_gesture.color);
    m_drawPathDidMoved = false;
    stampAction(DoodleActionTypeText);
    const QPointF logic = q->logicFromNormal(end);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
    m_doodleDraw->setTextSize(float(q->logicFromNormalWidth(m_gesture.width)));
}

void DoodleLayout::textEditDone(QLineEdit *textField)
{
    if (!textField)
        return;
    const DoodleActionPtr action = d->m_doodleDraw;
    if (!action || action->actionType() != DoodleActionTypeText) {
        if (ZQDoodleDrawView *canvas = doodleView()->getTempCanvas(0))
            canvas->cleanAllPath(); // a field without a text gesture: just close it
        return;
    }
    action->setText(textField->text());
    // Drawn from the action, as every receiver draws it: the exact anchor, the
    // text size and colour the field was opened with.
    drawDoodle(action);
    d->commitAction();
    d->m_drawPathDidMoved = false;
    d->m_startPoint = QPointF();
    d->m_endPoint = QPointF();
}
