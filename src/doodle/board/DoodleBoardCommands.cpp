// The board's core: the one route by which actions reach the board from the
// host and the other participants, and the local undo and clear.
#include "DoodleBoardCore_p.h"

#include <doodle/model/DoodleTranslate.h>

namespace {

DoodleActionPtr makeCommandAction(qint64 type, const QString &userId)
{
    auto action = std::make_shared<DoodleAction>();
    action->setActionType(type);
    action->setUserId(userId);
    return action;
}

} // namespace

void DoodleBoardCore::receiveAction(const DoodleActionPtr &action, const QString &fromUserId)
{
    if (!action)
        return;
    const qint64 type = action->actionType();
    const quint64 stamp = action->seqNo();
    if (doodleIsDrawnActionType(type)) {
        receiveDrawing(action, fromUserId);
        previewCommitted(fromUserId);
    } else if (type == DoodleActionTypeProgress) {
        receiveProgress(*action, fromUserId);
    } else if (type == DoodleActionTypeUndo) {
        // A stamped undo names the drawing it takes back; an older peer's the
        // sender's last one.
        if (stamp != 0)
            undoStamped(fromUserId, stamp);
        else
            undoLastOf(fromUserId);
    } else if (type == DoodleActionTypeClean) {
        const DoodleStamp clear{stamp, fromUserId};
        const bool newer = stamp == 0 || !m_lastClear || *m_lastClear < clear;
        if (stamp == 0)
            clearCache();
        else if (applyClear(clear))
            redrawAfterClear();
        if (newer)
            notifyCleared(fromUserId);
    }
}

void DoodleBoardCore::receiveFrom(const QString &userId, const DoodleActionPtr &action)
{
    // The channel's order counts what this board then drops, as every board does.
    if (action)
        noteChannelOrder(*action, userId);
    if (action && !m_muted.contains(userId) && withinLimits(userId, *action))
        receiveAction(action, userId);
}

void DoodleBoardCore::receiveText(const QString &userId, const QString &text)
{
    if (textWithinLimit(userId, text))
        receiveFrom(userId, DoodleTranslate::doodleActionFromString(text));
}

void DoodleBoardCore::undoLastOf(const QString &userId)
{
    const qsizetype index = lastIndexOwnedBy(userId);
    if (index >= 0)
        removeEntry(index);
}

void DoodleBoardCore::undoOwn()
{
    // The undo names the stamp of the drawing it takes back. With nothing of
    // this user's to take back nothing is sent: an undo that did nothing here
    // could still take a drawing on a board that holds one this one lacks.
    const qsizetype index = lastIndexOwnedBy(m_userId);
    if (index < 0)
        return;
    const quint64 stamp = m_doodlePathCache.entries().at(index).action->seqNo();
    removeEntry(index);
    const DoodleActionPtr action = makeCommandAction(DoodleActionTypeUndo, m_userId);
    action->setSeqNo(stamp);
    actionGenerated(action);
    undoEarlierParts(stamp); // a stroke sent in parts goes as a whole
}

void DoodleBoardCore::clearOwn()
{
    // An empty board has nothing to clear, and nobody needs to hear of it.
    if (m_doodlePathCache.size() == 0)
        return;
    // Ordered after everything this board has seen, so it removes all of it.
    const DoodleActionPtr action = makeCommandAction(DoodleActionTypeClean, m_userId);
    action->setSeqNo(nextStamp());
    applyClear({action->seqNo(), m_userId});
    clearCache();
    actionGenerated(action);
    // Deliberately after the clear and after the clear action was handed over.
    willClear();
    notifyCleared(m_userId);
}

bool DoodleBoardCore::commitLocal(const DoodleActionPtr &action)
{
    if (!action)
        return false;
    if (action->actionType() == DoodleActionTypeUndo) {
        undoOwn();
        return true;
    }
    if (action->actionType() == DoodleActionTypeClean) {
        clearOwn();
        return true;
    }
    if (!doodleIsDrawnActionType(action->actionType()))
        return false;
    // A copy: the caller's action keeps its author and stamp.
    const auto own = std::make_shared<DoodleAction>(*action);
    own->setUserId(m_userId);
    return commitAction(own);
}
