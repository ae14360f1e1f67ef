// The Quick board for a C++ host: the core's order and local actions, as the
// Widgets board offers them.
#include "DoodleBoard.h"
#include "DoodleBoard_p.h"

quint64 DoodleBoard::clock() const
{
    return d->m_clock;
}

void DoodleBoard::advanceClock(quint64 atLeast)
{
    d->observeClock(atLeast);
}

void DoodleBoard::setSharedOrder(bool shared)
{
    d->m_sharedOrder = shared;
}

bool DoodleBoard::hasSharedOrder() const
{
    return d->m_sharedOrder;
}

void DoodleBoard::onDoodleTextEchoed(const QString &text)
{
    d->noteEcho(text);
}

bool DoodleBoard::commitLocalAction(const DoodleActionPtr &action)
{
    return d->commitLocal(action);
}
