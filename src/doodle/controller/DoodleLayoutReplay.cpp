// Board controller: the host's calls that reach the board's core — replay of
// received actions, the full rebuild from the cache, undo and clear.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayout_p.h"

void DoodleLayout::doodleAction(const DoodleActionPtr &action, const QString &fromUserId)
{
    d->receiveAction(action, fromUserId);
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
    d->undoLastOf(userId);
}

void DoodleLayout::undo()
{
    d->undoOwn();
}

void DoodleLayout::cleanDoodle()
{
    d->clearOwn();
}

void DoodleLayoutPrivate::willClear()
{
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onWillCleanDoodle();
}

void DoodleLayoutPrivate::notifyCleared(const QString &userId)
{
    if (DoodleLayoutDelegate *host = m_delegate.get())
        host->onDoodleCleared(userId);
}

bool DoodleLayout::commitLocalAction(const DoodleActionPtr &action)
{
    return d->commitLocal(action);
}

void DoodleLayout::cleanDoodleCaches()
{
    d->clearCache();
}
