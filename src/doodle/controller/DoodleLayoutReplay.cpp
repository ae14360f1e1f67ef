// Board controller: the one route by which actions reach the board — replay of
// received actions, the full rebuild from the cache, undo and clear.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

#include <doodle/support/DoodleLog_p.h>

#include <QVarLengthArray>

#include <cmath>

namespace {

// A savepoint is taken every this many drawings, so an undo of a recent
// drawing replays at most twice as many, whatever the board holds; a coarse
// one, further behind, serves drawings that arrive late.
constexpr qsizetype kSavepointStep = 32;
constexpr qsizetype kCoarseStep = 256;
constexpr int kCoarse = 2; // the coarse one's slot

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
    const quint64 stamp = action->seqNo();
    if (doodleIsDrawnActionType(type)) {
        d->receiveDrawing(action, fromUserId);
    } else if (type == DoodleActionTypeUndo) {
        // A stamped undo names the drawing it takes back; an older peer's the
        // sender's last one.
        if (stamp != 0)
            d->undoStamped(fromUserId, stamp);
        else
            undoDrawPathWithUserId(fromUserId);
    } else if (type == DoodleActionTypeClean) {
        const DoodleStamp clear{stamp, fromUserId};
        const bool newer = stamp == 0 || !d->m_lastClear || *d->m_lastClear < clear;
        if (stamp == 0)
            cleanDoodleCaches();
        else if (d->applyClear(clear))
            d->redrawAfterClear();
        if (newer)
            d->notifyCleared(fromUserId);
    }
}

void DoodleLayout::addAction(const DoodleActionPtr &action)
{
    if (action)
        doodleAction(action, action->userId());
}

void DoodleLayout::drawDoodle(const DoodleActionPtr &action)
{
    if (action)
        d->paint(*action);
}

QRect DoodleLayoutPrivate::paint(const DoodleAction &a)
{
    DoodleSurface *canvas = cacheSurface();
    const double lineWidth = q->normalFromLogicWidth(a.brushWidth());
    switch (a.actionType()) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser:
        drawStroke(a);
        break;
    case DoodleActionTypeText:
        canvas->drawText(q->normalFromLogicPositionX(a.x(), a.y()), a.text(),
                         q->normalFromLogicWidth(a.textSize()), a.brushColor());
        break;
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle:
        paintBox(a, lineWidth);
        break;
    case DoodleActionTypeArrow:
        canvas->drawArrow(q->normalFromLogicPositionX(a.x(), a.y()),
                          q->normalFromLogicPositionX(a.endX(), a.endY()), lineWidth,
                          a.brushColor());
        break;
    default:
        return QRect();
    }
    return canvas->lastPaintedRect();
}

void DoodleLayoutPrivate::paintBox(const DoodleAction &a, double lineWidth)
{
    const QRectF logic(double(a.x()), double(a.y()), double(a.width()), double(a.height()));
    const QRectF rect = q->normalFromLogicRect(logic);
    if (a.actionType() == DoodleActionTypeRectangle) {
        cacheSurface()->drawRectangle(rect, lineWidth, a.brushColor());
    } else {
        cacheSurface()->drawEllipse(rect, lineWidth, a.brushColor());
        DOODLE_LOG(QStringLiteral("CGRectMake %1").arg(DoodleNumber::rectText(logic)));
    }
}

void DoodleLayoutPrivate::drawEntry(qsizetype index)
{
    const DoodleCacheEntry &entry = m_doodlePathCache.entries().at(index);
    m_doodlePathCache.setDrawnRect(index, paint(*entry.action));
}

void DoodleLayoutPrivate::drawStroke(const DoodleAction &action)
{
    bool dot = false;
    const QPainterPath path = smoothedPath(action.pathPoints(), &dot);
    const double width = q->normalFromLogicWidth(double(action.brushWidth()));
    const bool erase = action.actionType() != DoodleActionTypeStroke;
    if (dot)
        cacheSurface()->drawDot(path.currentPosition(), width, action.brushColor(), erase);
    else if (!erase)
        cacheSurface()->drawPath(path, width, action.brushColor());
    else
        cacheSurface()->erasePath(path, width);
}

QPainterPath DoodleLayoutPrivate::smoothedPath(const DoodlePointList &points, bool *isDot) const
{
    // Each point is the control point of a curve that ends halfway to the next
    // one; the last curve reaches the last point. Points that are malformed or
    // not finite are skipped.
    QPainterPath path;
    QPointF previous;
    qsizetype count = 0;
    for (const DoodlePoint &point : points) {
        if (point.size() < 3)
            continue;
        const QPointF current = q->normalFromLogicPositionX(point.x(), point.y());
        if (!std::isfinite(current.x()) || !std::isfinite(current.y()))
            continue;
        if (count++ == 0) {
            path.moveTo(current);
        } else {
            path.quadTo(previous, (previous + current) / 2);
        }
        previous = current;
    }
    if (path.elementCount() > 1)
        path.quadTo(previous, previous);
    if (isDot)
        *isDot = count > 1 && path.elementCount() == 1; // several points in one place
    return path;
}

void DoodleLayout::drawCachePath()
{
    if (!isViewLoaded())
        return;
    d->cacheSurface()->clear(false);
    const qsizetype count = d->m_doodlePathCache.size();
    DOODLE_LOG(QStringLiteral("addAction %1").arg(DoodleNumber::printfD(count)));
    d->dropSavepoints(-1);
    const qsizetype fine = std::max<qsizetype>(0, count - kSavepointStep);
    const qsizetype coarse = std::max<qsizetype>(0, count - kCoarseStep);
    for (qsizetype i = 0; i <= count; ++i) {
        if (i == coarse)
            d->takeSavepoint(i, true);
        if (i == fine)
            d->takeSavepoint(i, false);
        if (i < count)
            d->drawEntry(i);
    }
    d->reapplyLiveErasure();
}

void DoodleLayoutPrivate::dropSavepoints(qsizetype keepUpTo)
{
    for (DoodleSavepoint &save : m_saves) {
        if (save.count > keepUpTo)
            save.count = -1;
    }
}

void DoodleLayoutPrivate::takeSavepoint(qsizetype count, bool coarse)
{
    // A fine savepoint reuses the memory of the older fine one.
    DoodleSavepoint &save = coarse                                ? m_saves[kCoarse]
                            : m_saves[0].count < m_saves[1].count ? m_saves[0]
                                                                  : m_saves[1];
    cacheSurface()->copyPicture(save.picture);
    save.count = count;
    save.stale = false;
}

void DoodleLayoutPrivate::shiftSavepoints(qsizetype index, int shift)
{
    for (DoodleSavepoint &save : m_saves) {
        if (save.count > index) {
            save.count += shift;
            save.stale = true;
        }
    }
}

void DoodleLayoutPrivate::noteAppended()
{
    // Never while a live eraser has cleared pixels the cache does not hold yet.
    if (!m_liveErased.isEmpty())
        return;
    const qsizetype count = m_doodlePathCache.size();
    const qsizetype fine = std::max<qsizetype>({m_saves[0].count, m_saves[1].count, 0});
    if (count - fine >= kSavepointStep)
        takeSavepoint(count, false);
    if (count - std::max<qsizetype>(m_saves[kCoarse].count, 0) >= kCoarseStep)
        takeSavepoint(count, true);
}

void DoodleLayoutPrivate::redrawRegion(const QRectF &area)
{
    DoodleSurface *canvas = cacheSurface();
    const QRect region = area.toAlignedRect() & canvas->rect();
    // Stale savepoints lack a drawing that came in or still hold one that
    // went, inside the region only: the replay passes them and mends their
    // region. The newest other one is where the replay starts.
    QVarLengthArray<DoodleSavepoint *, 3> stale;
    const DoodleSavepoint *save = nullptr;
    for (DoodleSavepoint &each : m_saves) {
        if (each.count >= 0 && each.stale)
            stale.append(&each);
        else if (each.count >= 0 && (!save || each.count > save->count))
            save = &each;
        each.stale = false;
    }
    if (region.isEmpty())
        return; // no pixel changed: the savepoints hold as they are
    // The whole board with nothing to start from is a fresh redraw, which
    // also takes new savepoints; from a savepoint only what came after it is
    // drawn again, however large the region.
    if (!save && region == canvas->rect()) {
        q->drawCachePath();
        return;
    }
    const qsizetype first = save ? save->count : 0;
    canvas->beginRegionRedraw(region, save ? save->picture : QImage());
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = first; i <= entries.size(); ++i) {
        for (DoodleSavepoint *mend : stale) {
            if (mend->count == i && !canvas->copyRegionTo(mend->picture))
                mend->count = -1;
        }
        if (i < entries.size() && entries.at(i).drawnRect.intersects(region))
            paint(*entries.at(i).action);
    }
    reapplyLiveErasure();
    canvas->endRegionRedraw();
}

void DoodleLayout::undoDrawPathWithUserId(const QString &userId)
{
    const qsizetype index = d->lastIndexOwnedBy(userId);
    if (index >= 0)
        d->removeEntry(index);
}

void DoodleLayout::undo()
{
    // The undo names the stamp of the drawing it takes back. With nothing of
    // this user's to take back nothing is sent: an undo that did nothing here
    // could still take a drawing on a board that holds one this one lacks.
    const qsizetype index = d->lastIndexOwnedBy(d->m_userId);
    if (index < 0)
        return;
    const quint64 stamp = d->m_doodlePathCache.entries().at(index).action->seqNo();
    d->removeEntry(index);
    const DoodleActionPtr action = makeCommandAction(DoodleActionTypeUndo, d->m_userId);
    action->setSeqNo(stamp);
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onDoodleActionGenerated(action);
}

void DoodleLayout::cleanDoodle()
{
    // An empty board has nothing to clear, and nobody needs to hear of it.
    if (d->m_doodlePathCache.size() == 0)
        return;
    // Ordered after everything this board has seen, so it removes all of it.
    const DoodleActionPtr action = makeCommandAction(DoodleActionTypeClean, d->m_userId);
    action->setSeqNo(d->nextStamp());
    d->applyClear({action->seqNo(), d->m_userId});
    cleanDoodleCaches();
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onDoodleActionGenerated(action);
    // Deliberately after the clear and after the clear action was handed over.
    if (DoodleLayoutDelegate *host = d->m_delegate.get())
        host->onWillCleanDoodle();
    d->notifyCleared(d->m_userId);
}

void DoodleLayoutPrivate::notifyCleared(const QString &userId)
{
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onDoodleCleared(userId);
}

bool DoodleLayout::commitLocalAction(const DoodleActionPtr &action)
{
    if (!action)
        return false;
    if (action->actionType() == DoodleActionTypeUndo) {
        undo();
        return true;
    }
    if (action->actionType() == DoodleActionTypeClean) {
        cleanDoodle();
        return true;
    }
    if (!doodleIsDrawnActionType(action->actionType()))
        return false;
    // A copy: the caller's action keeps its author and stamp.
    const auto own = std::make_shared<DoodleAction>(*action);
    own->setUserId(d->m_userId);
    return d->commitAction(own);
}

void DoodleLayout::cleanDoodleCaches()
{
    d->m_doodlePathCache.cleanAllPath();
    d->recomputeFingerprint();
    d->dropSavepoints(-1);
    if (d->m_canvas->isShown()) {
        d->cacheSurface()->clear(true);
        d->takeSavepoint(0, false);
    }
    d->reapplyLiveErasure();
}
