// The Quick board: the host's switches for strokes that travel while they
// are drawn, and the largest text the board sends.
#include "DoodleBoard.h"
#include "DoodleBoard_p.h"

bool DoodleBoard::sendsLiveStrokes() const
{
    return d->m_live.sends;
}

void DoodleBoard::setSendsLiveStrokes(bool sends)
{
    if (d->m_live.sends == sends)
        return;
    d->m_live.sends = sends;
    emit liveStrokesChanged();
}

bool DoodleBoard::showsLiveStrokes() const
{
    return d->m_live.shows;
}

void DoodleBoard::setShowsLiveStrokes(bool shows)
{
    if (d->m_live.shows == shows)
        return;
    d->setShowsLiveStrokes(shows);
    emit liveStrokesChanged();
}

qint64 DoodleBoard::messageBudget() const
{
    return d->m_messageBudget;
}

void DoodleBoard::setMessageBudget(qint64 bytes)
{
    bytes = std::max<qint64>(bytes, 0);
    if (d->m_messageBudget == bytes)
        return;
    d->m_messageBudget = bytes;
    emit messageBudgetChanged();
}
