#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/model/DoodleAction.h>

#include <QList>
#include <QString>

// Every drawn action on the board, oldest first, held by shared reference.
// The board is rebuilt from it after an undo or a change of size.
class DOODLE_EXPORT DoodlePathCache
{
public:
    DoodlePathCache() = default;

    // Appends the action; nullptr is ignored.
    void addAction(const DoodleActionPtr &action);
    // Removes the newest action of that user; true if one was removed.
    bool removeLastPathWithUserId(const QString &userId);
    // The cache's own list, in drawing order.
    QList<DoodleActionPtr> &getAllPath() { return m_doodleArray; }
    const QList<DoodleActionPtr> &getAllPath() const { return m_doodleArray; }
    bool containsPathWithUserId(const QString &userId, quint64 pageNumber) const;
    void cleanAllPath();

private:
    QList<DoodleActionPtr> m_doodleArray;
};
