#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/model/DoodleAction.h>

#include <QHash>
#include <QList>
#include <QRectF>
#include <QString>

#include <functional>

// One cached drawing: the action, the participant it belongs to (the sender
// the host named, not a name written inside the action), the rectangle of
// the board it last changed, in view points (empty until drawn), and its share
// of the board's fingerprint (set by the board when it adds the entry). A
// drawing without a stamp that came through a channel with one shared order
// is anchored: it is the anchorRank-th such drawing after the stamped action
// (anchorClock 0: none) that came before it there, which places it alike on
// every board.
struct DoodleCacheEntry
{
    DoodleActionPtr action;
    QString owner;
    QRectF drawnRect;
    quint64 hash = 0;
    bool anchored = false;
    quint64 anchorClock = 0;
    QString anchorSender;
    quint64 anchorRank = 0;
};

// Every drawn action on the board, oldest first, held by shared reference.
// The board is rebuilt from it after an undo or a change of size.
class DOODLE_EXPORT DoodlePathCache
{
public:
    DoodlePathCache() = default;

    // Appends the action, owned by its written author; nullptr is ignored.
    void addAction(const DoodleActionPtr &action);
    // Appends the action, owned by `owner`; nullptr is ignored.
    void addAction(const DoodleActionPtr &action, const QString &owner);
    // Inserts the action at `index` (0 to size()), owned by `owner`.
    void insertAction(qsizetype index, const DoodleActionPtr &action, const QString &owner);
    // Removes the entry at `index` and returns it.
    DoodleCacheEntry takeAt(qsizetype index);
    // Removes every entry for which `drop` is true; returns how many.
    qsizetype removeEntriesIf(const std::function<bool(const DoodleCacheEntry &)> &drop);
    // Removes the newest action that `owner` owns; true if one was removed.
    // A null owner matches nothing, and an entry without an owner is never taken.
    bool removeLastPathWithUserId(const QString &owner);
    // Removes the newest action that `owner` owns and returns its entry (with
    // a null action when there is none) and, in `index`, where it was.
    DoodleCacheEntry takeLastOwnedBy(const QString &owner, qsizetype *index = nullptr);
    // The actions in drawing order.
    QList<DoodleActionPtr> getAllPath() const;
    const QList<DoodleCacheEntry> &entries() const { return m_entries; }
    qsizetype size() const { return m_entries.size(); }
    void setDrawnRect(qsizetype index, const QRectF &rect);
    void setHash(qsizetype index, quint64 hash);
    void setAnchor(qsizetype index, quint64 clock, const QString &sender, quint64 rank);
    // How many drawings, and how many stroke points in them, `owner` has cached.
    qsizetype actionsOwnedBy(const QString &owner) const;
    qsizetype pointsOwnedBy(const QString &owner) const;
    // True when an action of that written author on that page is cached.
    bool containsPathWithUserId(const QString &userId, quint64 pageNumber) const;
    void cleanAllPath();

private:
    void count(const DoodleCacheEntry &entry, qsizetype sign);

    struct Tally
    {
        qsizetype actions = 0;
        qsizetype points = 0;
    };
    QList<DoodleCacheEntry> m_entries;
    QHash<QString, Tally> m_tallies;
};
