#include "DoodlePathCache.h"

void DoodlePathCache::addAction(const DoodleActionPtr &action)
{
    if (action)
        addAction(action, action->userId());
}

void DoodlePathCache::addAction(const DoodleActionPtr &action, const QString &owner)
{
    if (!action)
        return;
    DoodleCacheEntry entry;
    entry.action = action;
    entry.owner = owner;
    m_entries.append(entry);
    count(m_entries.last(), 1);
}

void DoodlePathCache::insertAction(qsizetype index, const DoodleActionPtr &action,
                                   const QString &owner)
{
    if (!action || index < 0 || index > m_entries.size())
        return;
    DoodleCacheEntry entry;
    entry.action = action;
    entry.owner = owner;
    m_entries.insert(index, entry);
    count(m_entries.at(index), 1);
}

DoodleCacheEntry DoodlePathCache::takeAt(qsizetype index)
{
    if (index < 0 || index >= m_entries.size())
        return {};
    count(m_entries.at(index), -1);
    return m_entries.takeAt(index);
}

qsizetype
DoodlePathCache::removeEntriesIf(const std::function<bool(const DoodleCacheEntry &)> &drop)
{
    const qsizetype before = m_entries.size();
    m_entries.removeIf([&](const DoodleCacheEntry &entry) {
        if (!drop(entry))
            return false;
        count(entry, -1);
        return true;
    });
    return before - m_entries.size();
}

bool DoodlePathCache::removeLastPathWithUserId(const QString &owner)
{
    return takeLastOwnedBy(owner).action != nullptr;
}

DoodleCacheEntry DoodlePathCache::takeLastOwnedBy(const QString &owner, qsizetype *index)
{
    if (owner.isNull())
        return {};
    for (qsizetype i = m_entries.size() - 1; i >= 0; --i) {
        const QString &entryOwner = m_entries.at(i).owner;
        if (!entryOwner.isNull() && entryOwner == owner) {
            count(m_entries.at(i), -1);
            if (index)
                *index = i;
            return m_entries.takeAt(i);
        }
    }
    return {};
}

QList<DoodleActionPtr> DoodlePathCache::getAllPath() const
{
    QList<DoodleActionPtr> actions;
    actions.reserve(m_entries.size());
    for (const DoodleCacheEntry &entry : m_entries)
        actions.append(entry.action);
    return actions;
}

void DoodlePathCache::setDrawnRect(qsizetype index, const QRectF &rect)
{
    if (index >= 0 && index < m_entries.size())
        m_entries[index].drawnRect = rect;
}

void DoodlePathCache::setHash(qsizetype index, quint64 hash)
{
    if (index >= 0 && index < m_entries.size())
        m_entries[index].hash = hash;
}

void DoodlePathCache::setAnchor(qsizetype index, quint64 clock, const QString &sender, quint64 rank)
{
    if (index < 0 || index >= m_entries.size())
        return;
    m_entries[index].anchored = true;
    m_entries[index].anchorClock = clock;
    m_entries[index].anchorSender = sender;
    m_entries[index].anchorRank = rank;
}

bool DoodlePathCache::containsPathWithUserId(const QString &userId, quint64 pageNumber) const
{
    if (userId.isNull())
        return false;
    for (const DoodleCacheEntry &entry : m_entries) {
        const QString entryUser = entry.action->userId();
        if (!entryUser.isNull() && entryUser == userId && entry.action->pageNumber() == pageNumber)
            return true;
    }
    return false;
}

void DoodlePathCache::cleanAllPath()
{
    m_entries.clear();
    m_tallies.clear();
}

void DoodlePathCache::count(const DoodleCacheEntry &entry, qsizetype sign)
{
    Tally &tally = m_tallies[entry.owner];
    tally.actions += sign;
    tally.points += sign * entry.action->pathPoints().size();
    if (tally.actions == 0)
        m_tallies.remove(entry.owner);
}

qsizetype DoodlePathCache::actionsOwnedBy(const QString &owner) const
{
    return m_tallies.value(owner).actions;
}

qsizetype DoodlePathCache::pointsOwnedBy(const QString &owner) const
{
    return m_tallies.value(owner).points;
}
