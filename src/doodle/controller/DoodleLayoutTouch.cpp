// Board controller: the local user's gestures become a live preview, a
// permanent drawing and one action per finished gesture.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"

#include <QLineEdit>

#include <cmath>

namespace {

constexpr qint32 kTimeInterval = 2; // every locally captured point carries it

bool samePoint(const QPointF &a, const QPointF &b)
{
    return a.x() == b.x() && a.y() == b.y(); // exact, unlike QPointF's fuzzy ==
}

} // namespace

bool DoodleLayout::isOnBoard(const QPointF &point) const
{
    // The board's frame (its place in the controller's view) against a point in
    // the board's own coordinates: the two agree while the board sits at (0, 0).
    if (!m_doodleView)
        return false;
    const QRectF frame = m_doodleView->geometry();
    return point.x() >= frame.left() && point.x() < frame.left() + frame.width() &&
           point.y() >= frame.top() && point.y() < frame.top() + frame.height();
}

void DoodleLayout::stampAction(qint64 type)
{
    if (!m_doodleDraw)
        m_doodleDraw = std::make_shared<DoodleAction>();
    m_doodleDraw->setActionType(type);
    m_doodleDraw->setUserId(m_userId);
    m_doodleDraw->setBrushColor(m_brushColor);
}

void DoodleLayout::commitAction()
{
    // The host hears of the action before the cache records it.
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onDoodleActionGenerated(m_doodleDraw);
    if (m_doodlePathCache)
        m_doodlePathCache->addAction(m_doodleDraw);
    m_doodleDraw.reset();
}

void DoodleLayout::touchesBegan(const DoodleTouch &touch)
{
    if (m_isMinToolBar)
        return;
    closePickers();
    const QPointF p = touch.location;
    if (!isOnBoard(p))
        return;
    switch (m_actionMode) {
    case DoodleActionModeBrush:
    case DoodleActionModeEraser:
        beginStroke(p);
        break;
    case DoodleActionModeRectangle:
    case DoodleActionModeEllipse:
        beginBox(p);
        break;
    case DoodleActionModeArrow:
        beginArrow(p);
        break;
    default:
        return; // text starts when the touch ends
    }
    m_drawPathDidMoved = false;
}

void DoodleLayout::beginStroke(const QPointF &point)
{
    if (!m_hasPath) {
        m_path = QPainterPath(point);
        m_hasPath = true;
    }
    m_strokeEnd = m_path.currentPosition();
    const bool pen = m_actionMode == DoodleActionModeBrush;
    stampAction(pen ? DoodleActionTypeStroke : DoodleActionTypeEraser);
    m_doodleDraw->setBrushWidth(float(logicFromNormalWidth(pen ? m_brushWidth : m_eraserWidth)));
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->addPointWithPositionX(float(logic.x()), float(logic.y()), kTimeInterval);
}

void DoodleLayout::beginBox(const QPointF &point)
{
    if (m_rectIsNull || m_rect.width() == 0 || m_rect.height() == 0) {
        m_rect = QRectF(point, QSizeF(0, 0));
        m_rectIsNull = false;
    }
    const bool rectangle = m_actionMode == DoodleActionModeRectangle;
    stampAction(rectangle ? DoodleActionTypeRectangle : DoodleActionTypeEllipse);
    m_doodleDraw->setBrushWidth(float(logicFromNormalWidth(m_brushWidth)));
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
    m_doodleDraw->setWidth(0);
    m_doodleDraw->setHeight(0);
}

void DoodleLayout::beginArrow(const QPointF &point)
{
    if (m_startPoint.x() == 0)
        m_startPoint = point;
    stampAction(DoodleActionTypeArrow);
    m_doodleDraw->setBrushWidth(float(logicFromNormalWidth(m_brushWidth)));
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
}

void DoodleLayout::touchesMoved(const DoodleTouch &touch)
{
    if (m_isMinToolBar)
        return;
    QPointF p = touch.location;
    QPointF q = touch.previousLocation;
    if (!isOnBoard(q)) {
        q = limitTouchPoint(q, m_doodleView);
        p = limitTouchPoint(p, m_doodleView);
    }
    if (samePoint(p, q))
        return;
    if (!isOnBoard(p)) {
        finishStrokeOffBoard(q);
        return;
    }
    const QPointF mid((q.x() + p.x()) * 0.5, (q.y() + p.y()) * 0.5);
    switch (m_actionMode) {
    case DoodleActionModeBrush:
    case DoodleActionModeEraser:
        moveStroke(q, mid, p);
        break;
    case DoodleActionModeRectangle:
    case DoodleActionModeEllipse:
        moveBox(mid);
        break;
    case DoodleActionModeArrow:
        moveArrow(mid);
        break;
    default:
        break;
    }
}

void DoodleLayout::moveStroke(const QPointF &control, const QPointF &mid, const QPointF &point)
{
    if (m_hasPath) {
        m_path.quadTo(control, mid);
        // Only the new segment is drawn: the preview (and the eraser's live
        // erasing) costs the same per move however long the stroke grows.
        QPainterPath segment(m_strokeEnd);
        segment.quadTo(control, mid);
        m_strokeEnd = mid;
        if (m_actionMode == DoodleActionModeBrush)
            doodleView()->drawInTempWithPath(segment, m_brushWidth, m_brushColor);
        else
            doodleView()->eraseInCacheWithPath(segment, m_eraserWidth);
        m_drawPathDidMoved = true;
    }
    if (m_doodleDraw) {
        const QPointF logic = logicFromNormal(point);
        m_doodleDraw->addPointWithPositionX(float(logic.x()), float(logic.y()), kTimeInterval);
    }
}

void DoodleLayout::moveBox(const QPointF &mid)
{
    if (m_rectIsNull)
        return;
    m_rect.setSize(QSizeF(mid.x() - m_rect.x(), mid.y() - m_rect.y()));
    if (m_actionMode == DoodleActionModeRectangle)
        doodleView()->rectInTempWithPath(m_rect, m_brushWidth, m_brushColor);
    else
        doodleView()->ellipseInTempWithPath(m_rect, m_brushWidth, m_brushColor);
    m_drawPathDidMoved = true;
    if (m_doodleDraw) {
        m_doodleDraw->setWidth(float(logicFromNormalWidth(m_rect.width())));
        m_doodleDraw->setHeight(float(logicFromNormalHeight(m_rect.height())));
    }
}

void DoodleLayout::moveArrow(const QPointF &mid)
{
    m_endPoint = mid;
    doodleView()->arrowInTempWithStartPoint(m_startPoint, mid, m_brushWidth, m_brushColor);
    m_drawPathDidMoved = true;
    if (m_doodleDraw) {
        const QPointF logic = logicFromNormal(mid);
        m_doodleDraw->setEndX(float(logic.x()));
        m_doodleDraw->setEndY(float(logic.y()));
    }
}

void DoodleLayout::finishStrokeOffBoard(const QPointF &previous)
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

void DoodleLayout::drawStrokePermanently()
{
    if (m_actionMode == DoodleActionModeBrush)
        doodleView()->drawInCacheWithPath(m_path, m_brushWidth, m_brushColor);
    else
        doodleView()->eraseInCacheWithPath(m_path, m_eraserWidth);
}

QPointF DoodleLayout::gestureEndPoint(const DoodleTouch &touch) const
{
    // Deliberately the previous location, pulled inside when off the board.
    const QPointF end = touch.previousLocation;
    return isOnBoard(end) ? end : limitTouchPoint(end, m_doodleView);
}

void DoodleLayout::touchesEnded(const DoodleTouch &touch)
{
    if (m_isMinToolBar || !(m_drawPathDidMoved || m_actionMode == DoodleActionModeText))
        return;
    finishGesture(gestureEndPoint(touch), false);
}

void DoodleLayout::touchesCancelled(const DoodleTouch &touch)
{
    // A cancelled gesture is committed, not discarded; shapes keep their raw size.
    if (!m_drawPathDidMoved)
        return;
    finishGesture(gestureEndPoint(touch), true);
}

void DoodleLayout::finishGesture(const QPointF &end, bool cancelled)
{
    switch (m_actionMode) {
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

void DoodleLayout::endStroke(const QPointF &end)
{
    if (!m_hasPath)
        return;
    m_path.quadTo(end, end);
    drawStrokePermanently();
    commitAction();
    m_path = QPainterPath();
    m_hasPath = false;
}

void DoodleLayout::endBox(const QPointF &end, bool normalise)
{
    if (m_rectIsNull)
        return;
    const QPointF origin = m_rect.topLeft();
    m_rect = normalise ? QRectF(std::min(origin.x(), end.x()), std::min(origin.y(), end.y()),
                                std::abs(end.x() - origin.x()), std::abs(end.y() - origin.y()))
                       : QRectF(origin, QSizeF(end.x() - origin.x(), end.y() - origin.y()));
    if (m_actionMode == DoodleActionModeRectangle)
        doodleView()->rectInCatchWithPath(m_rect, m_brushWidth, m_brushColor);
    else
        doodleView()->ellipseInCatchWithPath(m_rect, m_brushWidth, m_brushColor);
    if (m_doodleDraw) {
        if (normalise) {
            const QPointF logic = logicFromNormal(m_rect.topLeft());
            m_doodleDraw->setX(float(logic.x()));
            m_doodleDraw->setY(float(logic.y()));
        }
        m_doodleDraw->setWidth(float(logicFromNormalWidth(m_rect.width())));
        m_doodleDraw->setHeight(float(logicFromNormalHeight(m_rect.height())));
    }
    commitAction();
    m_drawPathDidMoved = false;
    m_rectIsNull = true;
}

void DoodleLayout::endArrow(const QPointF &end)
{
    m_endPoint = end;
    doodleView()->arrowInCatchWithStartPoint(m_startPoint, end, m_brushWidth, m_brushColor);
    if (m_doodleDraw) {
        const QPointF logic = logicFromNormal(end);
        m_doodleDraw->setEndX(float(logic.x()));
        m_doodleDraw->setEndY(float(logic.y()));
    }
    commitAction();
    m_drawPathDidMoved = false;
    m_startPoint = QPointF();
    m_endPoint = QPointF();
}

void DoodleLayout::openTextEntry(const QPointF &end)
{
    m_startPoint = end;
    doodleView()->textInTempWithStartPoint(end, QString(), m_textSize, m_brushColor);
    m_drawPathDidMoved = false;
    stampAction(DoodleActionTypeText);
    const QPointF logic = logicFromNormal(end);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
    m_doodleDraw->setTextSize(float(logicFromNormalWidth(m_textSize)));
}

void DoodleLayout::textEditDone(QLineEdit *textField)
{
    if (!textField)
        return;
    // Read the field first: committing the text cleans the canvas it sits on.
    const QString text = textField->text();
    const QFont font = textField->font();
    const double size = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF();
    doodleView()->textInCatchWithStartPoint(textField->geometry().topLeft(), text, size,
                                            textField->palette().color(QPalette::Text));
    if (!m_doodleDraw)
        return;
    const QPointF logic = logicFromNormal(m_startPoint);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
    m_doodleDraw->setText(text);
    m_doodleDraw->setTextSize(float(logicFromNormalWidth(m_textSize)));
    commitAction();
    m_drawPathDidMoved = false;
    m_startPoint = QPointF();
    m_endPoint = QPointF();
}
