// Board controller: the core's order, state and moderation, for hosts.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayout_p.h"

quint64 DoodleLayout::clock() const
{
    return d->m_clock;
}

void DoodleLayout::advanceClock(quint64 atLeast)
{
    d->observeClock(atLeast);
}

quint64 DoodleLayout::fingerprint() const
{
    return d->m_fingerprint;
}

QString DoodleLayout::exportState() const
{
    return d->exportState();
}

bool DoodleLayout::isPictureSettled() const
{
    return d->isPictureSettled();
}

bool DoodleLayout::mergeState(const QString &text)
{
    return d->mergeStateText(text);
}

QStringList DoodleLayout::exportStateParts() const
{
    return d->exportStateParts();
}

void DoodleLayout::setMuted(const QString &userId, bool muted)
{
    if (muted)
        d->m_muted.insert(userId);
    else
        d->m_muted.remove(userId);
}

bool DoodleLayout::isMuted(const QString &userId) const
{
    return d->m_muted.contains(userId);
}

void DoodleLayout::removeDrawingsOf(const QString &userId)
{
    d->removeDrawingsOf(userId);
}

void DoodleLayout::setSharedOrder(bool shared)
{
    d->m_sharedOrder = shared;
}

bool DoodleLayout::hasSharedOrder() const
{
    return d->m_sharedOrder;
}

void DoodleLayout::onDoodleTextEchoed(const QString &text)
{
    d->noteEcho(text);
}
