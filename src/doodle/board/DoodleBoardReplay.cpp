// The board's core: the one route by which cached actions reach the board's
// pictures, the full rebuild from the cache, savepoints and region redraw.
#include "DoodleBoardCore_p.h"

#include <doodle/board/DoodleDrawInput.h>
#include <doodle/support/DoodleLog_p.h>

#include <QVarLengthArray>

#include <utility>

namespace {

// Past this many cached drawings a full redraw costs more than a frame, and
// runs on the worker.
qsizetype g_backgroundFrom = kSavepointStep;

} // namespace

DoodleBoardCore::~DoodleBoardCore() = default;

QRect DoodleBoardCore::paint(const DoodleAction &a)
{
    return DoodleReplayPainter(*cacheSurface(), boardSize()).paint(a);
}

void DoodleBoardCore::drawEntry(qsizetype index)
{
    const DoodleCacheEntry &entry = m_doodlePathCache.entries().at(index);
    m_doodlePathCache.setDrawnRect(index, paint(*entry.action));
}

QPainterPath DoodleBoardCore::smoothedPath(const DoodlePointList &points, bool *isDot) const
{
    DoodleSurface unused;
    return DoodleReplayPainter(unused, boardSize()).smoothedPath(points, isDot);
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
    DoodleReplayPainter::takeSavepoint(*cacheSurface(), m_saves, count, coarse);
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
    // Never while a live eraser has cleared pixels the cache does not hold
    // yet, nor on a picture a background redraw is about to replace.
    if (!m_liveErased.isEmpty() || m_background.job)
        return;
    const qsizetype count = m_doodlePathCache.size();
    const qsizetype fine = std::max<qsizetype>({m_saves[0].count, m_saves[1].count, 0});
    if (count - fine >= kSavepointStep)
        takeSavepoint(count, false);
    if (count - std::max<qsizetype>(m_saves[kCoarseSave].count, 0) >= kCoarseStep)
        takeSavepoint(count, true);
}

void DoodleBoardCore::redrawRegion(const QRectF &area)
{
    // The pending background redraw is out of date: it starts again when done.
    if (m_background.job) {
        m_background.diverged = true;
        return;
    }
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
    const qsizetype count = m_doodlePathCache.size();
    DOODLE_LOG(QStringLiteral("addAction %1").arg(DoodleNumber::printfD(count)));
    if (g_backgroundFrom >= 0 && count > g_backgroundFrom)
        startBackgroundRedraw();
    else
        redrawAllNow();
    // Peers' gestures under way show at the board's present size too.
    if (!m_live.previews.isEmpty())
        redrawPreviews();
}

void DoodleBoardCore::redrawAllNow()
{
    const bool wasPending = m_background.cancel();
    DoodleSurface *canvas = cacheSurface();
    canvas->clear(false);
    QList<QRect> drawn;
    DoodleReplayPainter(*canvas, boardSize())
        .replayAll(m_doodlePathCache.entries(), m_saves, drawn);
    for (qsizetype i = 0; i < drawn.size(); ++i)
        m_doodlePathCache.setDrawnRect(i, drawn.at(i));
    reapplyLiveErasure();
    if (wasPending && isPictureSettled())
        notifyPictureSettled();
}

void DoodleBoardCore::startBackgroundRedraw()
{
    // A redraw under way is for an older size or cache: it stops.
    m_background.cancel();
    auto job = std::make_shared<DoodleRedrawJob>();
    job->entries = m_doodlePathCache.entries();
    job->surfaceSize = cacheSurface()->size();
    job->boardSize = boardSize();
    job->scale = cacheSurface()->scale();
    // The worker reads the system font as the GUI thread last saw it.
    DoodleDrawInput::systemFont(1);
    m_background.job = job;
    m_background.run(
        [job] {
            DoodleSurface surface;
            surface.setSize(job->surfaceSize);
            surface.setScale(job->scale);
            const DoodleReplayPainter painter(surface, job->boardSize);
            if (painter.replayAll(job->entries, job->saves, job->drawn, &job->cancelled))
                job->picture = surface.picture();
        },
        [this, job] { finishBackgroundRedraw(job); });
}

void DoodleBoardCore::finishBackgroundRedraw(const std::shared_ptr<DoodleRedrawJob> &job)
{
    if (job != m_background.job)
        return; // cancelled since
    if (m_background.diverged || !jobStillFits(*job)) {
        startBackgroundRedraw();
        return;
    }
    // The cache stops sharing its entries with the job before its drawn
    // rectangles are set, so they are not copied.
    const qsizetype drawn = job->entries.size();
    job->entries.clear();
    installRedraw(*job);
    m_background.job.reset();
    // What was added to the cache meanwhile goes on the new picture, as it
    // would have gone after a redraw on the GUI thread.
    for (qsizetype i = drawn; i < m_doodlePathCache.size(); ++i)
        drawEntry(i);
    if (drawn < m_doodlePathCache.size())
        noteAppended(); // a savepoint holds every drawing up to the cache's end
    reapplyLiveErasure();
    if (isPictureSettled())
        notifyPictureSettled();
}

// Whether the job drew what the board now holds, at its size, but for
// drawings added to the cache's end since.
bool DoodleBoardCore::jobStillFits(const DoodleRedrawJob &job)
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    if (!m_canvas->isShown() || job.surfaceSize != cacheSurface()->size() ||
        job.boardSize != boardSize() || job.scale != cacheSurface()->scale() ||
        entries.size() < job.entries.size())
        return false;
    for (qsizetype i = 0; i < job.entries.size(); ++i) {
        if (entries.at(i).action != job.entries.at(i).action)
            return false;
    }
    return true;
}

void DoodleBoardCore::installRedraw(DoodleRedrawJob &job)
{
    // The pictures replaced are freed on the worker: giving that much memory
    // back takes milliseconds.
    QList<QImage> replaced{cacheSurface()->picture()};
    cacheSurface()->setPicture(std::exchange(job.picture, QImage()));
    for (qsizetype i = 0; i < job.drawn.size(); ++i)
        m_doodlePathCache.setDrawnRect(i, job.drawn.at(i));
    for (int i = 0; i < 3; ++i) {
        replaced.append(std::exchange(m_saves[i].picture, QImage()));
        m_saves[i] = std::move(job.saves[i]);
    }
    m_background.run([replaced = std::move(replaced)] {}, {});
}

void DoodleBoardCore::setBackgroundRedrawFrom(qsizetype count)
{
    g_backgroundFrom = count;
}

qsizetype DoodleBoardCore::backgroundRedrawFrom()
{
    return g_backgroundFrom;
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
    const bool wasPending = m_background.cancel();
    m_doodlePathCache.cleanAllPath();
    recomputeFingerprint();
    dropSavepoints(-1);
    if (m_canvas->isShown()) {
        cacheSurface()->clear(true);
        takeSavepoint(0, false);
    }
    reapplyLiveErasure();
    if (wasPending && isPictureSettled())
        notifyPictureSettled();
}
