// The board's core: the local user's gestures become a live preview, a
// permanent drawing and one action per finished gesture. Every gesture starts
// from nothing and leaves nothing behind; what it commits is drawn from the
// action exactly as every receiver draws it.
#include "DoodleBoardCore_p.h"

#include <doodle/model/DoodleProgress_p.h>
#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <cmath>

namespace {

constexpr qint32 kTimeInterval = 2;   // every locally captured point carries it
constexpr quint64 kPreviewCanvas = 0; // live previews of strokes and shapes
constexpr quint64 kTextCanvas = 1;    // the text field, apart from the previews
constexpr quint64 kTailCanvas = 2;    // a stroke's last stretch, from its end to the pointer

bool samePoint(const QPointF &a, const QPointF &b)
{
    return a.x() == b.x() && a.y() == b.y(); // exact, unlike QPointF's fuzzy ==
}

// The action as a receiver gets it: every number quantised by the text form.
DoodleActionPtr asReceived(const DoodleActionPtr &action)
{
    return DoodleTranslate::doodleActionFromString(DoodleTranslate::stringFromDoodleAction(action));
}

} // namespace

DoodleGestureTool DoodleBoardCore::toolForMode(qint64 mode) const
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

bool DoodleBoardCore::isOnBoard(const QPointF &point) const
{
    // A point in the board's own coordinates; with a fixed aspect the board
    // sits inside its view's margins, and a point there is off the board.
    if (!m_canvas->isShown())
        return false;
    const QSizeF size = m_canvas->boardSize();
    return point.x() >= 0 && point.x() < size.width() && point.y() >= 0 &&
           point.y() < size.height();
}

DoodleActionPtr DoodleBoardCore::newAction(qint64 type) const
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(m_userId);
    // Stored as the text form carries it, so that nothing finer is drawn locally.
    action->setBrushColor(QColor::fromRgba(m_gesture.color.rgba()));
    action->setBrushWidth(float(logicFromNormalWidth(m_gesture.width)));
    return action;
}

void DoodleBoardCore::resetGesture()
{
    m_doodleDraw.reset();
    m_path = QPainterPath();
    m_hasPath = false;
    m_rect = QRectF();
    m_rectIsNull = true;
    m_startPoint = QPointF();
    m_endPoint = QPointF();
    m_drawPathDidMoved = false;
    m_liveErased = QRectF();
    m_tail = QPainterPath();
}

void DoodleBoardCore::abandonGesture()
{
    liveEnded(true);
    const QRectF erased = m_liveErased;
    const bool hadPreview = m_drawPathDidMoved;
    resetGesture();
    if (!m_canvas->isShown())
        return;
    if (hadPreview)
        cleanPreview();
    // What a live eraser took away comes back from the cache.
    if (!erased.isEmpty())
        redrawRegion(erased);
}

void DoodleBoardCore::cleanPreview()
{
    for (quint64 index : {kPreviewCanvas, kTailCanvas})
        m_canvas->cleanPreview(index, false);
}

DoodleSurface *DoodleBoardCore::freshPreview()
{
    // A shape's preview shows the shape alone: emptied before every move.
    m_canvas->cleanPreview(kPreviewCanvas, false);
    return m_canvas->previewSurface(kPreviewCanvas);
}

void DoodleBoardCore::drawTail(const QPointF &from, const QPointF &to)
{
    // The smoothed path ends half way to the pointer; a straight stretch on a
    // surface of its own shows the rest until the next move replaces it.
    DoodleSurface *canvas = m_canvas->previewSurface(kTailCanvas);
    if (!canvas)
        return;
    if (!m_tail.isEmpty()) // wider than drawn, so no antialiased edge is left behind
        canvas->erasePath(m_tail, m_gesture.width + 2);
    m_tail = QPainterPath(from);
    m_tail.lineTo(to);
    canvas->drawPath(m_tail, m_gesture.width, m_gesture.color);
}

bool DoodleBoardCore::commitAction(const DoodleActionPtr &built)
{
    if (built)
        built->setSeqNo(nextStamp());
    const DoodleActionPtr action = built ? asReceived(built) : nullptr;
    if (!action) {
        qCWarning(lcDoodle, "a local action could not be written as text; dropped");
        return false;
    }
    // The host hears of the action (or its parts) before the cache records it.
    return commitWithinBudget(action);
}

void DoodleBoardCore::commitGesture()
{
    liveEnded(false); // the committed action replaces the others' previews
    const DoodleActionPtr built = m_doodleDraw;
    const QRectF erased = m_liveErased;
    resetGesture();
    // Until the erasure is replayed the picture holds the live one: no savepoint meanwhile.
    m_liveErased = erased;
    cleanPreview();
    const bool committed = commitAction(built);
    m_liveErased = QRectF();
    if (!erased.isEmpty()) {
        // The live eraser cleared its segments one by one; the committed
        // erasure is the replay of the whole path once, as every receiver draws it.
        QRectF region = erased;
        if (committed)
            region |= m_doodlePathCache.entries().last().drawnRect;
        redrawRegion(region);
    }
    if (committed)
        noteAppended();
}

void DoodleBoardCore::gestureBegan(const DoodleTouch &touch)
{
    abandonGesture();
    m_leftForeground = false;
    m_gesture = toolForMode(m_actionMode);
    const QPointF p = touch.location;
    if (!isOnBoard(p))
        return;
    switch (m_gesture.mode) {
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
    case DoodleActionModeLaser:
        laserBegan(p);
        return;
    default:
        break; // text starts when the touch ends
    }
    if (m_doodleDraw)
        liveBegan();
}

void DoodleBoardCore::beginStroke(const QPointF &point)
{
    m_path = QPainterPath(point);
    m_hasPath = true;
    m_strokeEnd = point;
    const bool pen = m_gesture.mode == DoodleActionModeBrush;
    m_doodleDraw = newAction(pen ? DoodleActionTypeStroke : DoodleActionTypeEraser);
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->addPointWithPositionX(float(logic.x()), float(logic.y()), kTimeInterval);
}

void DoodleBoardCore::beginBox(const QPointF &point)
{
    m_rect = QRectF(point, QSizeF(0, 0));
    m_rectIsNull = false;
    const bool rectangle = m_gesture.mode == DoodleActionModeRectangle;
    m_doodleDraw = newAction(rectangle ? DoodleActionTypeRectangle : DoodleActionTypeEllipse);
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
}

void DoodleBoardCore::beginArrow(const QPointF &point)
{
    m_startPoint = point;
    m_doodleDraw = newAction(DoodleActionTypeArrow);
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->setX(float(logic.x()));
    m_doodleDraw->setY(float(logic.y()));
}

void DoodleBoardCore::gestureMoved(const DoodleTouch &touch)
{
    if (m_live.kind == DoodleProgress::kLaser)
        laserMoved(touch.location);
    if (!m_doodleDraw)
        return;
    QPointF p = touch.location;
    QPointF q = touch.previousLocation;
    if (!isOnBoard(q)) {
        q = limitTouchPoint(q, boardSize());
        p = limitTouchPoint(p, boardSize());
    }
    if (samePoint(p, q))
        return;
    if (!isOnBoard(p)) {
        finishStrokeOffBoard();
        return;
    }
    const QPointF mid((q.x() + p.x()) * 0.5, (q.y() + p.y()) * 0.5);
    switch (m_gesture.mode) {
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
    liveChanged();
}

void DoodleBoardCore::moveStroke(const QPointF &control, const QPointF &mid, const QPointF &point)
{
    m_path.quadTo(control, mid);
    // Only the new segment is drawn: the preview (and the eraser's live
    // erasing) costs the same per move however long the stroke grows.
    QPainterPath segment(m_strokeEnd);
    segment.quadTo(control, mid);
    m_strokeEnd = mid;
    if (m_gesture.mode == DoodleActionModeBrush) {
        if (DoodleSurface *preview = m_canvas->previewSurface(kPreviewCanvas))
            preview->drawPath(segment, m_gesture.width, m_gesture.color);
        drawTail(mid, point);
    } else {
        cacheSurface()->erasePath(segment, m_gesture.width);
        m_liveErased |= cacheSurface()->lastPaintedRect();
    }
    m_drawPathDidMoved = true;
    const QPointF logic = logicFromNormal(point);
    m_doodleDraw->addPointWithPositionX(float(logic.x()), float(logic.y()), kTimeInterval);
}

void DoodleBoardCore::moveBox(const QPointF &mid)
{
    m_rect.setSize(QSizeF(mid.x() - m_rect.x(), mid.y() - m_rect.y()));
    if (DoodleSurface *preview = freshPreview()) {
        if (m_gesture.mode == DoodleActionModeRectangle)
            preview->drawRectangle(m_rect, m_gesture.width, m_gesture.color);
        else
            preview->drawEllipse(m_rect, m_gesture.width, m_gesture.color);
    }
    m_drawPathDidMoved = true;
    m_doodleDraw->setWidth(float(logicFromNormalWidth(m_rect.width())));
    m_doodleDraw->setHeight(float(logicFromNormalHeight(m_rect.height())));
}

void DoodleBoardCore::moveArrow(const QPointF &mid)
{
    m_endPoint = mid;
    if (DoodleSurface *preview = freshPreview())
        preview->drawArrow(m_startPoint, mid, m_gesture.width, m_gesture.color);
    m_drawPathDidMoved = true;
    const QPointF logic = logicFromNormal(mid);
    m_doodleDraw->setEndX(float(logic.x()));
    m_doodleDraw->setEndY(float(logic.y()));
}

void DoodleBoardCore::finishStrokeOffBoard()
{
    // The finger left the board: a stroke is committed at once; shapes wait.
    if (!m_hasPath)
        return;
    if (m_drawPathDidMoved)
        commitGesture();
    else
        abandonGesture();
}

QPointF DoodleBoardCore::gestureEndPoint(const DoodleTouch &touch) const
{
    // Deliberately the previous location, pulled inside when off the board.
    const QPointF end = touch.previousLocation;
    if (isOnBoard(end) || !m_canvas->isShown())
        return end;
    return limitTouchPoint(end, boardSize());
}

void DoodleBoardCore::gestureEnded(const DoodleTouch &touch)
{
    if (m_gesture.mode == DoodleActionModeText && m_textDraw)
        commitOpenText(); // a tap away from an open field finishes it
    else if (m_gesture.mode == DoodleActionModeText)
        openTextEntry(gestureEndPoint(touch));
    else if (m_doodleDraw && m_drawPathDidMoved)
        finishGesture(gestureEndPoint(touch), false);
    else
        abandonGesture(); // a tap: nothing drawn, nothing kept
}

void DoodleBoardCore::gestureCancelled(const DoodleTouch &touch)
{
    // A cancelled gesture is committed, not discarded; shapes keep their raw size.
    if (m_doodleDraw && m_drawPathDidMoved)
        finishGesture(gestureEndPoint(touch), true);
    else
        abandonGesture();
}

void DoodleBoardCore::finishGesture(const QPointF &end, bool cancelled)
{
    switch (m_gesture.mode) {
    case DoodleActionModeRectangle:
    case DoodleActionModeEllipse:
        endBox(end, !cancelled);
        break;
    case DoodleActionModeArrow:
        if (cancelled && m_endPoint.x() == 0) {
            abandonGesture();
            return;
        }
        endArrow(end);
        break;
    default:
        break; // a stroke ends at its last point, as replayed
    }
    commitGesture();
}

void DoodleBoardCore::endBox(const QPointF &end, bool normalise)
{
    const QPointF origin = m_rect.topLeft();
    m_rect = normalise ? QRectF(std::min(origin.x(), end.x()), std::min(origin.y(), end.y()),
                                std::abs(end.x() - origin.x()), std::abs(end.y() - origin.y()))
                       : QRectF(origin, QSizeF(end.x() - origin.x(), end.y() - origin.y()));
    if (normalise) {
        const QPointF logic = logicFromNormal(m_rect.topLeft());
        m_doodleDraw->setX(float(logic.x()));
        m_doodleDraw->setY(float(logic.y()));
    }
    m_doodleDraw->setWidth(float(logicFromNormalWidth(m_rect.width())));
    m_doodleDraw->setHeight(float(logicFromNormalHeight(m_rect.height())));
}

void DoodleBoardCore::endArrow(const QPointF &end)
{
    const QPointF logic = logicFromNormal(end);
    m_doodleDraw->setEndX(float(logic.x()));
    m_doodleDraw->setEndY(float(logic.y()));
}

void DoodleBoardCore::openTextEntry(const QPointF &end)
{
    closeTextField();
    resetGesture();
    m_textDraw = newAction(DoodleActionTypeText);
    m_textDraw->setBrushWidth(0);
    const QPointF logic = logicFromNormal(end);
    m_textDraw->setX(float(logic.x()));
    m_textDraw->setY(float(logic.y()));
    m_textDraw->setTextSize(float(logicFromNormalWidth(m_gesture.width)));
    m_canvas->openTextEntry(end, m_gesture.width, m_gesture.color, kTextCanvas);
}

void DoodleBoardCore::closeTextField()
{
    m_textDraw.reset();
    m_canvas->cleanPreview(kTextCanvas, true);
}

void DoodleBoardCore::commitOpenText()
{
    const DoodleActionPtr action = m_textDraw;
    if (!action)
        return;
    const QString text = m_canvas->textEntryText();
    closeTextField();
    // A blank text would draw nothing, yet the next undo would take it back.
    if (text.trimmed().isEmpty())
        return;
    action->setText(text);
    // Drawn from the action, as every receiver draws it: its exact anchor and
    // the text size and colour the field was opened with.
    if (commitAction(action))
        noteAppended();
}
