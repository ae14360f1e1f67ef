// The board's core: the one route by which cached actions reach the board's
// pictures, the full rebuild from the cache, savepoints and region redraw.
#include "DoodleBoardCore_p.h"

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

} // namespace

QRect DoodleBoardCore::paint(const DoodleAction &a)
{
    DoodleSurface *canvas = cacheSurface();
    const double lineWidth = normalFromLogicWidth(a.brushWidth());
    switch (a.actionType()) {
    case DoodleActionTypeStroke:
    case DoodleActionTypeEraser:
        drawStroke(a);
        break;
    case DoodleActionTypeText:
        canvas->drawText(normalFromLogicPosition(a.x(), a.y()), a.text(),
                         normalFromLogicWidth(a.textSize()), a.brushColor());
        break;
    case DoodleActionTypeEllipse:
    case DoodleActionTypeRectangle:
        paintBox(a, lineWidth);
        break;
    case DoodleActionTypeArrow:
        canvas->drawArrow(normalFromLogicPosition(a.x(), a.y()),
                          normalFromLogicPosition(a.endX(), a.endY()), lineWidth, a.brushColor());
        break;
    default:
        return QRect();
    }
    return canvas->lastPaintedRect();
}

void DoodleBoardCore::paintBox(const DoodleAction &a, double lineWidth)
{
    const QRectF logic(double(a.x()), double(a.y()), double(a.width()), double(a.height()));
    const QRectF rect = normalFromLogicRect(logic);
    if (a.actionType() == DoodleActionTypeRectangle) {
        cacheSurface()->drawRectangle(rect, lineWidth, a.brushColor());
    } else {
        cacheSurface()->drawEllipse(rect, lineWidth, a.brushColor());
        DOODLE_LOG(QStringLiteral("CGRectMake %1").arg(DoodleNumber::rectText(logic)));
    }
}

void DoodleBoardCore::drawEntry(qsizetype index)
{
    const DoodleCacheEntry &entry = m_doodlePathCache.entries().at(index);
    m_doodlePathCache.setDrawnRect(index, paint(*entry.action));
}

void DoodleBoardCore::drawStroke(const DoodleAction &action)
{
    bool dot = false;
    const QPainterPath path = smoothedPath(action.pathPoints(), &dot);
    const double width = normalFromLogicWidth(double(action.brushWidth()));
    const bool erase = action.actionType() != DoodleActionTypeStroke;
    if (dot)
        cacheSurface()->drawDot(path.currentPosition(), width, action.brushColor(), erase);
    else if (!erase)
        cacheSurface()->drawPath(path, width, action.brushColor());
    else
        cacheSurface()->erasePath(path, width);
}

QPainterPath DoodleBoardCore::smoothedPath(const DoodlePointList &points, bool *isDot) const
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
        const QPointF current = normalFromLogicPosition(point.x(), point.y());
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

void DoodleBoardCore::dropSavepoints(qsizetype keepUpTo)
{
    for (DoodleSavepoint &save : m_saves) {
        if (save.count > keepUpTo)
            save.count = -1;
    }
}

void DoodleBoardCore::takeSavepoint(qsizetype count, bool coarse)
{
    // A fine savepoint reuses the memory of the older fine one.
    DoodleSavepoint &save = coarse                                ? m_saves[kCoarse]
                            : m_saves[0].count < m_saves[1].count ? m_saves[0]
                                                                  : m_saves[1];
    cacheSurface()->copyPicture(save.picture);
    save.count = count;
    save.stale = false;
}

void DoodleBoardCore::shiftSavepoints(qsizetype index, int shift)
{
    for (DoodleSavepoint &save : m_saves) {
        if (save.count > index) {
            save.count += shift;
            save.stale = true;
        }
    }
}

void DoodleBoardCore::noteAppended()
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

void DoodleBoardCore::redrawRegion(const QRectF &area)
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
        redrawAll();
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

void DoodleBoardCore::redrawAll()
{
    if (!m_canvas->isShown())
        return;
    cacheSurface()->clear(false);
    const qsizetype count = m_doodlePathCache.size();
    DOODLE_LOG(QStringLiteral("addAction %1").arg(DoodleNumber::printfD(count)));
    dropSavepoints(-1);
    const qsizetype fine = std::max<qsizetype>(0, count - kSavepointStep);
    const qsizetype coarse = std::max<qsizetype>(0, count - kCoarseStep);
    for (qsizetype i = 0; i <= count; ++i) {
        if (i == coarse)
            takeSavepoint(i, true);
        if (i == fine)
            takeSavepoint(i, false);
        if (i < count)
            drawEntry(i);
    }
    reapplyLiveErasure();
}

void DoodleBoardCore::reapplyLiveErasure()
{
    if (!m_hasPath || m_gesture.mode != DoodleActionModeEraser || !m_canvas->isShown())
        return;
    cacheSurface()->erasePath(m_path, m_gesture.width);
    m_liveErased |= cacheSurface()->lastPaintedRect();
}

void DoodleBoardCore::clearCache()
{
    m_doodlePathCache.cleanAllPath();
    recomputeFingerprint();
    dropSavepoints(-1);
    if (m_canvas->isShown()) {
        cacheSurface()->clear(true);
        takeSavepoint(0, false);
    }
    reapplyLiveErasure();
}
