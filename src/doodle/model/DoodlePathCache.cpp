#include "DoodlePathCache.h"

void DoodlePathCache::addAction(const DoodleActionPtr &action)
{
    if (action)
        m_doodleArray.append(action);
}

bool DoodlePathCache::removeLastPathWithUserId(const QString &userId)
{
    // A null identifier is "none" and matches nothing, not even entries without one.
    if (userId.isNull())
        return false;
    for (qsizetype i = m_doodleArray.size() - 1; i >= 0; --i) {
        const QString entryUser = m_doodleArray.at(i)->userId();
        if (!entryUser.isNull() && entryUser == userId) {
            m_doodleArray.removeAt(i);
            return true;
        }
    }
    return false;
}

bool DoodlePathCache::containsPathWithUserId(const QString &userId, quint64 pageNumber) const
{
    if (userId.isNull())
        return false;
    for (const DoodleActionPtr &action : m_doodleArray) {
        const QString entryUser = action->userId();
        if (!entryUser.isNull() && entryUser == userId && action->pageNumber() == pageNumber)
            return true;
    }
    return false;
}

void DoodlePathCache::cleanAllPath()
{
    m_doodleArray.clear();
}
