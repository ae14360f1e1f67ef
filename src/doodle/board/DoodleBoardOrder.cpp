// The board's core: one order on every board (order stamps), the state a
// board hands to another, its fingerprint, and moderation.
#include "DoodleBoardCore_p.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstring>

namespace {

constexpr qsizetype kMaxStateBytes = 64 * 1024 * 1024;
constexpr qsizetype kMaxTombstones = 100000;
constexpr quint64 kLargestStamp = (quint64(1) << 53) - 1;
// Up to this many changes made together are measured and redrawn as one
// region; past it the board is drawn afresh (a merge into an empty board
// brings thousands).
constexpr qsizetype kBatchLimit = 64;

// FNV-1a over values fed byte by byte, least significant first: the same on
// every platform and Qt version, unlike qHash.
class Fnv1a
{
public:
    void add(quint64 value)
    {
        for (int shift = 0; shift < 64; shift += 8)
            addByte(quint8(value >> shift));
    }
    void add(float value)
    {
        quint32 bits = 0;
        if (value != 0) // 0 and -0 draw the same
            std::memcpy(&bits, &value, sizeof bits);
        add(quint64(bits));
    }
    // A null and an empty text hash the same: the text form cannot tell them apart.
    void add(const QString &text)
    {
        add(quint64(text.size()));
        for (const QChar c : text)
            add(quint64(c.unicode()));
    }
    quint64 value() const { return m_hash; }

private:
    void addByte(quint8 byte)
    {
        m_hash ^= byte;
        m_hash *= 0x100000001b3ULL;
    }
    quint64 m_hash = 0xcbf29ce484222325ULL;
};

// What a drawing shows, as its text form carries it for its type: a drawing
// made here and the same one decoded from its text on another board hash equal.
void addContent(Fnv1a &hash, const DoodleAction &a)
{
    const qint64 type = a.actionType();
    hash.add(quint64(type));
    hash.add(a.pageNumber());
    hash.add(a.brushWidth() > 0 ? a.brushWidth() : 0.0f);
    hash.add(a.brushColor().isValid() ? quint64(HexadecimalColorFromUIColor(a.brushColor())) + 1
                                      : quint64(0));
    if (type == DoodleActionTypeStroke || type == DoodleActionTypeEraser) {
        hash.add(quint64(a.pathPoints().size()));
        for (const DoodlePoint &point : a.pathPoints()) {
            hash.add(point.x());
            hash.add(point.y());
        }
        return;
    }
    hash.add(a.x());
    hash.add(a.y());
    hash.add(quint64(qint64(a.rotate())));
    if (type == DoodleActionTypeText) {
        hash.add(a.text());
        hash.add(a.textSize());
        return;
    }
    hash.add(a.width());
    hash.add(a.height());
    if (type == DoodleActionTypeArrow) {
        hash.add(a.endX());
        hash.add(a.endY());
    }
}

quint64 stampHash(char kind, const DoodleStamp &stamp)
{
    Fnv1a hash;
    hash.add(quint64(quint8(kind)));
    hash.add(stamp.clock);
    hash.add(stamp.sender);
    return hash.value();
}

QJsonArray stampJson(const DoodleStamp &stamp)
{
    return QJsonArray{qint64(stamp.clock), stamp.sender};
}

std::optional<DoodleStamp> stampFrom(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    const qint64 clock = array.at(0).toInteger(-1);
    if (array.size() != 2 || clock <= 0 || !array.at(1).isString())
        return std::nullopt;
    return DoodleStamp{quint64(clock), array.at(1).toString()};
}

} // namespace

size_t qHash(const DoodleStamp &stamp, size_t seed)
{
    return qHashMulti(seed, stamp.clock, stamp.sender);
}

DoodleStamp DoodleBoardCore::stampOf(const DoodleCacheEntry &entry)
{
    return DoodleStamp{entry.action->seqNo(), entry.owner};
}

void DoodleBoardCore::observeClock(quint64 clock)
{
    m_clock = std::min(std::max(m_clock, clock), kLargestStamp);
}

quint64 DoodleBoardCore::nextStamp()
{
    observeClock(m_clock + 1);
    return m_clock;
}

// A drawing counts by its stamp (none for a peer without stamps), its owner and
// what it shows, so boards that hold different drawings under one stamp differ.
quint64 DoodleBoardCore::entryHash(const QString &owner, const DoodleAction &action)
{
    Fnv1a hash;
    hash.add(quint64('d'));
    hash.add(action.seqNo());
    hash.add(owner);
    addContent(hash, action);
    return hash.value();
}

// Each entry's hash was taken once, when it was added. The fingerprint is
// their sum: two equal copies of a drawing without a stamp count twice, where
// they would cancel out in an exclusive or.
void DoodleBoardCore::recomputeFingerprint()
{
    m_fingerprint = m_lastClear ? stampHash('c', *m_lastClear) : 0;
    m_unstampedCount = 0;
    for (const DoodleCacheEntry &entry : m_doodlePathCache.entries()) {
        m_fingerprint += entry.hash;
        m_unstampedCount += entry.action->seqNo() == 0 ? 1 : 0;
    }
    scheduleCommandUpdate();
}

void DoodleBoardCore::insertEntry(qsizetype index, const DoodleActionPtr &action,
                                  const QString &owner)
{
    const quint64 hash = entryHash(owner, *action);
    m_doodlePathCache.insertAction(index, action, owner);
    m_doodlePathCache.setHash(index, hash);
    m_fingerprint += hash;
    m_unstampedCount += action->seqNo() == 0 ? 1 : 0;
    scheduleCommandUpdate();
    shiftSavepoints(index, 1);
    if (m_batch)
        batchChange(index, {});
}

// Where a stamped drawing goes: after every entry ordered before it. Entries
// from peers without stamps stay where they arrived, so nothing goes before
// them; with such entries on the board the stamped ones are not all in order,
// and a copy is looked for through the whole cache.
qsizetype DoodleBoardCore::insertionIndex(const DoodleStamp &stamp, bool *duplicate) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    qsizetype index = entries.size();
    bool placed = false;
    *duplicate = false;
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        const bool stamped = entries.at(i).action->seqNo() != 0;
        const DoodleStamp other = stamped ? stampOf(entries.at(i)) : DoodleStamp();
        if (stamped && other == stamp) {
            *duplicate = true;
            return i;
        }
        placed = placed || !stamped || other < stamp;
        if (!placed)
            index = i;
        else if (m_unstampedCount == 0)
            break;
    }
    return index;
}

bool DoodleBoardCore::receiveDrawing(const DoodleActionPtr &action, const QString &owner)
{
    qsizetype index = m_doodlePathCache.size();
    if (const quint64 clock = action->seqNo()) {
        observeClock(clock);
        const DoodleStamp stamp{clock, owner};
        // Ordered before the last clear, taken back already, or known: nothing to do.
        if ((m_lastClear && !(*m_lastClear < stamp)) || m_undone.contains(stamp))
            return false;
        bool duplicate = false;
        index = insertionIndex(stamp, &duplicate);
        if (duplicate)
            return false;
    }
    insertEntry(index, action, owner);
    if (!m_batch && m_canvas->isShown())
        placeEntry(index);
    return true;
}

void DoodleBoardCore::placeEntry(qsizetype index)
{
    if (index == m_doodlePathCache.size() - 1) {
        drawEntry(index);
        noteAppended();
        return;
    }
    // A late arrival: only the region it covers is drawn again, in order.
    const QRect rect = measureEntry(index);
    if (overlapsLaterEntries(index, rect)) {
        redrawRegion(rect);
        return;
    }
    // Nothing ordered after it touches its pixels, so drawing it last gives
    // the same picture; the savepoints that lack it get it the same way.
    DoodleSurface *canvas = cacheSurface();
    const DoodleAction &action = *m_doodlePathCache.entries().at(index).action;
    paint(action);
    for (DoodleSavepoint &save : m_saves) {
        if (!save.stale)
            continue;
        save.stale = false;
        if (save.picture.size() != canvas->picture().size()) {
            save.count = -1;
            continue;
        }
        canvas->setTarget(&save.picture);
        paint(action);
        canvas->setTarget(nullptr);
    }
}

QRect DoodleBoardCore::measureEntry(qsizetype index)
{
    DoodleSurface *canvas = cacheSurface();
    canvas->setMeasuring(true);
    const QRect rect = paint(*m_doodlePathCache.entries().at(index).action);
    canvas->setMeasuring(false);
    m_doodlePathCache.setDrawnRect(index, rect);
    return rect;
}

bool DoodleBoardCore::overlapsLaterEntries(qsizetype index, const QRect &rect) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = index + 1; i < entries.size(); ++i) {
        if (entries.at(i).drawnRect.intersects(rect))
            return true;
    }
    return false;
}

void DoodleBoardCore::beginBatch()
{
    m_batch = DoodleBatch();
}

void DoodleBoardCore::batchChange(qsizetype inserted, const QRectF &removed)
{
    DoodleBatch &batch = *m_batch;
    batch.whole = batch.whole || ++batch.changes > kBatchLimit;
    if (batch.whole || !m_canvas->isShown())
        return;
    batch.region |= inserted >= 0 ? QRectF(measureEntry(inserted)) : removed;
}

void DoodleBoardCore::endBatch()
{
    const DoodleBatch batch = *m_batch;
    m_batch.reset();
    if (batch.whole)
        redrawAfterClear();
    else if (batch.changes > 0 && m_canvas->isShown())
        redrawRegion(batch.region);
}

void DoodleBoardCore::removeEntry(qsizetype index)
{
    const DoodleCacheEntry removed = m_doodlePathCache.takeAt(index);
    if (!removed.action)
        return;
    m_fingerprint -= removed.hash;
    scheduleCommandUpdate();
    if (removed.action->seqNo() != 0)
        rememberUndone(stampOf(removed));
    else
        --m_unstampedCount;
    shiftSavepoints(index, -1);
    if (m_batch)
        batchChange(-1, removed.drawnRect);
    else if (m_canvas->isShown())
        redrawRegion(removed.drawnRect);
}

void DoodleBoardCore::rememberUndone(const DoodleStamp &stamp)
{
    m_undone.insert(stamp);
    if (m_undone.size() <= kMaxTombstones)
        return;
    // Past the bound the oldest are forgotten: only a copy of a drawing that
    // old, arriving now, could come back.
    QList<quint64> clocks;
    for (const DoodleStamp &s : std::as_const(m_undone))
        clocks << s.clock;
    const auto middle = clocks.begin() + clocks.size() / 10;
    std::nth_element(clocks.begin(), middle, clocks.end());
    const quint64 oldest = *middle;
    m_undone.removeIf([oldest](const DoodleStamp &s) { return s.clock < oldest; });
}

qsizetype DoodleBoardCore::lastIndexOwnedBy(const QString &owner) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        if (!entries.at(i).owner.isNull() && entries.at(i).owner == owner)
            return i;
    }
    return -1;
}

void DoodleBoardCore::undoStamped(const QString &owner, quint64 clock)
{
    observeClock(clock);
    const DoodleStamp stamp{clock, owner};
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        if (entries.at(i).action->seqNo() == clock && entries.at(i).owner == owner) {
            removeEntry(i);
            return;
        }
    }
    rememberUndone(stamp); // its drawing may still be on its way
}

bool DoodleBoardCore::applyClear(const DoodleStamp &stamp)
{
    observeClock(stamp.clock);
    if (m_lastClear && !(*m_lastClear < stamp))
        return false;
    m_lastClear = stamp;
    // Everything ordered before the clear goes, and drawings from peers without stamps.
    const qsizetype removed =
        m_doodlePathCache.removeEntriesIf([&stamp](const DoodleCacheEntry &entry) {
            return entry.action->seqNo() == 0 || stampOf(entry) < stamp;
        });
    m_undone.removeIf([&stamp](const DoodleStamp &s) { return s < stamp; });
    recomputeFingerprint();
    return removed > 0;
}

void DoodleBoardCore::redrawAfterClear()
{
    if (!m_canvas->isShown())
        return;
    if (m_doodlePathCache.size() == 0)
        clearCache();
    else
        redrawAll();
}

QString DoodleBoardCore::exportState() const
{
    QJsonArray actions;
    qsizetype bytes = 0;
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    // The newest drawings first, up to the bound; then back in order. Drawings
    // without a stamp keep their place among the stamped ones.
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        const QString text = DoodleTranslate::stringFromDoodleAction(entries.at(i).action);
        bytes += text.size() + entries.at(i).owner.size();
        if (bytes > kMaxStateBytes) {
            qCWarning(lcDoodle, "the exported state leaves out %lld older drawings",
                      static_cast<long long>(i + 1));
            break;
        }
        actions.prepend(QJsonArray{entries.at(i).owner, text});
    }
    QJsonArray undone;
    for (const DoodleStamp &stamp : std::as_const(m_undone))
        undone.append(stampJson(stamp));
    QJsonObject state{{QStringLiteral("doodle_state"), 1},
                      {QStringLiteral("clock"), qint64(m_clock)},
                      {QStringLiteral("undone"), undone},
                      {QStringLiteral("actions"), actions}};
    if (m_lastClear)
        state.insert(QStringLiteral("clear"), stampJson(*m_lastClear));
    return QString::fromUtf8(QJsonDocument(state).toJson(QJsonDocument::Compact));
}

bool DoodleBoardCore::mergeState(const QString &text)
{
    if (text.size() > kMaxStateBytes) {
        qCWarning(lcDoodle, "a state of %lld characters is over the bound; not merged",
                  static_cast<long long>(text.size()));
        return false;
    }
    const QJsonObject state = QJsonDocument::fromJson(text.toUtf8()).object();
    if (state.value(QStringLiteral("doodle_state")).toInt() != 1) {
        qCWarning(lcDoodle, "not a board state; not merged");
        return false;
    }
    observeClock(quint64(std::max<qint64>(0, state.value(QStringLiteral("clock")).toInteger())));
    // One redraw for the whole merge, of what it changed.
    beginBatch();
    const auto clear = stampFrom(state.value(QStringLiteral("clear")));
    if (clear && applyClear(*clear))
        m_batch->whole = true;
    mergeUndone(state.value(QStringLiteral("undone")).toArray());
    // The state's drawings without a stamp came after its clear; a later clear
    // here removes them, as it did the ones this board held.
    mergeActions(state.value(QStringLiteral("actions")).toArray(), clear == m_lastClear);
    endBatch();
    return true;
}

void DoodleBoardCore::mergeUndone(const QJsonArray &undone)
{
    for (const QJsonValue &value : undone) {
        const auto stamp = stampFrom(value);
        if (!stamp)
            continue;
        bool present = false;
        const qsizetype index = insertionIndex(*stamp, &present);
        if (present)
            removeEntry(index);
        else
            rememberUndone(*stamp);
    }
}

void DoodleBoardCore::mergeActions(const QJsonArray &actions, bool takeUnstamped)
{
    // The drawings without a stamp this board holds, by hash: a copy in the
    // state is taken only beyond as many as are here.
    QHash<quint64, qsizetype> held;
    for (const DoodleCacheEntry &entry : m_doodlePathCache.entries()) {
        if (entry.action->seqNo() == 0)
            ++held[entry.hash];
    }
    std::optional<DoodleStamp> previous; // the last stamped drawing met in the state
    for (const QJsonValue &value : actions) {
        const QJsonArray pair = value.toArray();
        const QString owner = pair.at(0).toString();
        const DoodleActionPtr action =
            DoodleTranslate::doodleActionFromString(pair.at(1).toString());
        if (!action || !doodleIsDrawnActionType(action->actionType()) || m_muted.contains(owner))
            continue;
        if (action->seqNo() != 0) {
            previous = DoodleStamp{action->seqNo(), owner};
            if (withinLimits(owner, *action))
                receiveDrawing(action, owner);
            continue;
        }
        qsizetype &copies = held[entryHash(owner, *action)];
        if (copies > 0)
            --copies;
        else if (takeUnstamped && withinLimits(owner, *action))
            insertEntry(unstampedIndex(previous), action, owner);
    }
}

// A drawing without a stamp has nothing to order it by. Merged, it goes right
// after the stamped drawing it followed in the sender's state (first when none),
// behind the unstamped ones this board already has there, as if it arrived
// now: so it covers, and is covered by, the same stamped drawings as on the
// sender's board, and those that reach every board live keep their place.
qsizetype DoodleBoardCore::unstampedIndex(const std::optional<DoodleStamp> &after) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    qsizetype index = 0;
    if (after) {
        index = -1;
        for (qsizetype i = entries.size() - 1; i >= 0 && index < 0; --i) {
            if (entries.at(i).action->seqNo() == after->clock &&
                entries.at(i).owner == after->sender)
                index = i + 1;
        }
        bool present = false;
        if (index < 0) // not here (taken back or cleared): where it would go
            index = insertionIndex(*after, &present);
    }
    while (index < entries.size() && entries.at(index).action->seqNo() == 0)
        ++index;
    return index;
}

void DoodleBoardCore::removeDrawingsOf(const QString &userId)
{
    // Newest first, so the indices still to visit stay where they are.
    beginBatch();
    for (qsizetype i = lastIndexOwnedBy(userId); i >= 0; --i) {
        const QString &owner = m_doodlePathCache.entries().at(i).owner;
        if (!owner.isNull() && owner == userId)
            removeEntry(i);
    }
    endBatch();
}

void DoodleBoardCore::forgetOrder()
{
    // The clock keeps counting: stamps this board sends never repeat.
    m_lastClear.reset();
    m_undone.clear();
}
