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

void DoodleLayout::drawCachePath()
{
    if (isViewLoaded())
        d->redrawAll();
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
    d->clearCache();
}
