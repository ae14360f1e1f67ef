// The board controller: the host's switches for strokes that travel while
// they are drawn, and the largest text the board sends.
#include "DoodleLayout_p.h"

bool DoodleLayout::sendsLiveStrokes() const
{
    return d->m_live.sends;
}

void DoodleLayout::setSendsLiveStrokes(bool sends)
{
    d->m_live.sends = sends;
}

bool DoodleLayout::showsLiveStrokes() const
{
    return d->m_live.shows;
}

void DoodleLayout::setShowsLiveStrokes(bool shows)
{
    d->setShowsLiveStrokes(shows);
}

qsizetype DoodleLayout::messageBudget() const
{
    return d->m_messageBudget;
}

void DoodleLayout::setMessageBudget(qsizetype bytes)
{
    d->m_messageBudget = std::max<qsizetype>(bytes, 0);
}
