// Board controller: the one route by which actions reach the board — replay of
// received actions, the full rebuild from the cache, undo and clear.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

#include <doodle/support/DoodleLog_p.h>

#include <cmath>

namespace {

DoodleActionPtr makeCommandAction(qint64 type, const QString &userId)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(userId);
    return action;
}

} // namespace

void DoodleLayout::doodleAction(const DoodleActionPtr &action, const QString &fromUserId)
{
    if (!action)
        return;
    const qint64 type = action->actionType();
    if (doodleIsDrawnActionType(type)) {
        d->m_doodlePathCache.addAction(action);
        if (isViewLoaded())
            drawDoodle(action);
    } else if (type == DoodleActionTypeUndo) {
        undoDrawPathWithUserId(fromUserId);
    } else if (type == DoodleActionTypeClean) {
        d->m_doodlePathCache.cleanAllPath();
        if (isViewLoaded())
            cleanDoodleCaches();
    }
}

void DoodleLayout::addAction(const DoodleActionPtr &action)
{
    if (action)
        doodleAction(action, action->userId());
}

void DoodleLayout::drawDoodle(const DoodleActionPtr &action)
{
    if (!action)
        return;
    const DoodleAction &a = *action;
    const double lineWidth = normalFromLogicWidth(a.brushWidth());
    switch (a.actionType()) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser:
        d->drawStroke(a);
        break;
    case DoodleActionTypeText:
        doodleView()->textInCatchWithStartPoint(normalFromLogicPositionX(a.x(), a.y()), a.text(),
                                                normalFromLogicWidth(a.textSize()), a.brushColor());
        break;
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle: {
        const QRectF logic(a.x(), a.y(), a.width(), a.height());
        const QRectF rect = normalFromLogicRect(logic);
        if (a.actionType() == DoodleActionTypeRectangle) {
            doodleView()->rectInCatchWithPath(rect, lineWidth, a.brushColor());
        } else {
            doodleView()->ellipseInCatchWithPath(rect, lineWidth, a.brushColor());
            DOODLE_LOG(QStringLiteral("CGRectMake %1").arg(DoodleNumber::rectText(logic)));
        }
        break;
    }
    case DoodleActionTypeArrow:
        doodleView()->arrowInCatchWithStartPoint(normalFromLogicPositionX(a.x(), a.y()),
                                                 normalFromLogicPositionX(a.endX(), a.endY()),
                                                 lineWidth, a.brushColor());
        break;
    default:
        break;
    }
}

void DoodleLayoutPrivate::drawStroke(const DoodleAction &action)
{
    const QPainterPath path = smoothedPath(action.pathPoints());
    const double width = q->normalFromLogicWidth(action.brushWidth());
    if (action.actionType() == DoodleActionTypeStroke)
        q->doodleView()->drawInCacheWithPath(path, width, action.brushColor());
    else
        q->doodleView()->eraseInCacheWithPath(path, width);
}

QPainterPath DoodleLayoutPrivate::smoothedPath(const DoodlePointList &points) const
{
    // Each point is the control point of a curve that ends halfway to the next
    // one; the last curve reaches the last point. Points that are malformed or
    // not finite are skipped.
    QPainterPath path;
    QPointF previous;
    bool started = false;
    for (const DoodlePoint &point : points) {
        if (point.size() < 3)
            continue;
        const QPointF current =
            q->normalFromLogicPositionX(point.at(1).toFloat(), point.at(2).toFloat());
        if (!std::isfinite(current.x()) || !std::isfinite(current.y()))
            continue;
        if (!started) {
            path.moveTo(current);
            started = true;
        } else {
            path.quadTo(previous, (previous + current) / 2);
        }
        previous = current;
    }
    if (path.elementCount() > 1)
        path.quadTo(previous, previous);
    return path;
}

void DoodleLayout::drawCachePath()
{
    if (!isViewLoaded())
        return;
    const QList<DoodleActionPtr> actions = getAllPath();
    doodleView()->clearAll();
    DOODLE_LOG(QStringLiteral("addAction %1").arg(DoodleNumber::printfD(actions.size())));
    for (const DoodleActionPtr &action : actions)
        drawDoodle(action);
}

void DoodleLayout::undoDrawPathWithUserId(const QString &userId)
{
    if (d->m_doodlePathCache.removeLastPathWithUserId(userId))
        drawCachePath();
}

void DoodleLayout::undo()
{
    undoDrawPathWithUserId(d->m_userId);
    const DoodleActionPtr action = makeCommandAction(DoodleActionTypeUndo, d->m_userId);
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onDoodleActionGenerated(action);
}

void DoodleLayout::cleanDoodle()
{
    cleanDoodleCaches();
    const DoodleActionPtr action = makeCommandAction(DoodleActionTypeClean, d->m_userId);
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onDoodleActionGenerated(action);
    // Deliberately after the clear and after the clear action was handed over.
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onWillCleanDoodle();
}

void DoodleLayout::cleanDoodleCaches()
{
    if (d->m_doodleView)
        d->m_doodleView->clearAll();
    d->m_doodlePathCache.cleanAllPath();
}
