// The board's core: one order on every board (order stamps), the state a
// board hands to another, its fingerprint, and moderation.
#include "DoodleBoardCore_p.h"
#include "DoodleStateText_p.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QDeadlineTimer>
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
// A state longer than this many characters for each drawing a full redraw
// takes on the GUI thread is read on the worker.
constexpr qsizetype kStateCharsPerDrawing = 512;
// The GUI thread takes a merged state's drawings in slices this long.
constexpr qint64 kMergeSliceMs = 4;

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

std::optional<DoodleStamp> stampFrom(const QJsonValue &value, qint64 least = 1)
{
    const QJsonArray array = value.toArray();
    const qint64 clock = array.at(0).toInteger(-1);
    if (array.size() != 2 || clock < least || !array.at(1).isString())
        return std::nullopt;
    return DoodleStamp{quint64(clock), array.at(1).toString()};
}

// [clock, sender, rank]; the clock 0 for none.
std::optional<DoodleAnchor> anchorFrom(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    const auto after = stampFrom(QJsonArray{array.at(0), array.at(1)}, 0);
    const qint64 rank = array.at(2).toInteger(-1);
    if (array.size() != 3 || !after || rank < 0)
        return std::nullopt;
    return DoodleAnchor{*after, quint64(rank)};
}

QJsonArray anchorJson(const DoodleAnchor &anchor)
{
    return QJsonArray{qint64(anchor.after.clock), anchor.after.sender, qint64(anchor.rank)};
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

// A drawing without a stamp anchored in a shared order counts by its place too:
// boards that hold it in different places differ.
quint64 DoodleBoardCore::anchoredHash(quint64 content, const DoodleAnchor &anchor)
{
    Fnv1a hash;
    hash.add(quint64('a'));
    hash.add(content);
    hash.add(anchor.after.clock);
    hash.add(anchor.after.sender);
    hash.add(anchor.rank);
    return hash.value();
}

std::optional<DoodleAnchor> DoodleBoardCore::anchorOf(const DoodleCacheEntry &entry)
{
    if (!entry.anchored)
        return std::nullopt;
    return DoodleAnchor{DoodleStamp{entry.anchorClock, entry.anchorSender}, entry.anchorRank};
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
                                  const QString &owner, const std::optional<DoodleAnchor> &anchor)
{
    quint64 hash = entryHash(owner, *action);
    m_doodlePathCache.insertAction(index, action, owner);
    if (anchor) {
        hash = anchoredHash(hash, *anchor);
        m_doodlePathCache.setAnchor(index, anchor->after.clock, anchor->after.sender, anchor->rank);
    }
    m_doodlePathCache.setHash(index, hash);
    m_fingerprint += hash;
    m_unstampedCount += action->seqNo() == 0 ? 1 : 0;
    scheduleCommandUpdate();
    shiftSavepoints(index, 1);
    if (m_batch)
        batchChange(index, {});
}

// Where a stamped drawing goes: after every entry ordered before it. Entries
// from peers without stamps follow their anchor; unanchored ones stay where
// they arrived, so nothing goes before them. With such entries on the board
// the stamped ones may not all be in order, and a copy is looked for through
// the whole cache.
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
        const std::optional<DoodleAnchor> anchor = anchorOf(entries.at(i));
        placed = placed || (stamped ? other < stamp : !anchor || anchor->after < stamp);
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
    std::optional<DoodleAnchor> anchor;
    if (action->seqNo() == 0 && m_sharedOrder) {
        // Ordered before the last clear (as it was where the clear came after
        // it), or known already from a state: nothing to do.
        bool present = false;
        anchor = m_received;
        index = anchoredIndex(*anchor, &present);
        if (present || (m_lastClear && anchor->after < *m_lastClear))
            return false;
    } else if (const quint64 clock = action->seqNo()) {
        observeClock(clock);
        const DoodleStamp stamp{clock, owner};
        // Ordered before the last clear, taken back already, or known: nothing to do.
        if ((m_lastClear && !(*m_lastClear < stamp)) || m_undone.contains(stamp))
            return false;
        bool duplicate = false;
        index = insertionIndex(stamp, &duplicate);
        // Two drawings under one stamp come only from a peer that misbehaves:
        // every board keeps the one with the smaller hash, so boards agree.
        if (duplicate && entryHash(owner, *action) >= m_doodlePathCache.entries().at(index).hash)
            return false;
        if (duplicate) {
            removeEntry(index);
            m_undone.remove(stamp); // replaced, not taken back
        }
    }
    insertEntry(index, action, owner, anchor);
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
    // A late arrival on a picture about to be replaced: the redraw under way
    // starts again once done.
    if (m_background.job) {
        m_background.diverged = true;
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
    // Inside a merge taken a slice at a time, the changes join its batch.
    if (m_batch)
        ++m_batch->depth;
    else
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
    if (m_batch->depth > 0) {
        --m_batch->depth;
        return;
    }
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
    // Everything ordered before the clear goes, and unanchored drawings from
    // peers without stamps.
    const qsizetype removed =
        m_doodlePathCache.removeEntriesIf([&stamp](const DoodleCacheEntry &entry) {
            if (entry.action->seqNo() != 0)
                return stampOf(entry) < stamp;
            const std::optional<DoodleAnchor> anchor = anchorOf(entry);
            return !anchor || anchor->after < stamp;
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
        QJsonArray pair{entries.at(i).owner, text};
        if (const auto anchor = DoodleBoardCore::anchorOf(entries.at(i)))
            pair.append(anchorJson(*anchor));
        actions.prepend(pair);
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
    return DoodleStateText::pack(QJsonDocument(state).toJson(QJsonDocument::Compact));
}

bool DoodleBoardCore::mergeState(const QString &text)
{
    if (text.size() > kMaxStateBytes) {
        qCWarning(lcDoodle, "a state of %lld characters is over the bound; not merged",
                  static_cast<long long>(text.size()));
        return false;
    }
    auto merge = std::make_shared<DoodleStateMerge>();
    const qsizetype from = backgroundRedrawFrom();
    if (m_canvas->isShown() && from >= 0 && text.size() > from * kStateCharsPerDrawing) {
        mergeOnWorker(merge, text);
        return true;
    }
    decodeState(text, *merge);
    if (!merge->valid) {
        qCWarning(lcDoodle, "%s; not merged", qPrintable(merge->problem));
        return false;
    }
    beginMerge(*merge);
    mergeSlice(*merge, QDeadlineTimer(QDeadlineTimer::Forever));
    endBatch();
    return true;
}

// Reads the state's text; touches nothing of the board, so it runs on any thread.
void DoodleBoardCore::decodeState(const QString &text, DoodleStateMerge &merge)
{
    const std::optional<QByteArray> json =
        DoodleStateText::unpack(text, kMaxStateBytes, &merge.problem);
    if (!json)
        return;
    const QJsonObject state = QJsonDocument::fromJson(*json).object();
    if (state.value(QStringLiteral("doodle_state")).toInt() != 1) {
        merge.problem = QStringLiteral("not a board state");
        return;
    }
    merge.valid = true;
    merge.clock = quint64(std::max<qint64>(0, state.value(QStringLiteral("clock")).toInteger()));
    merge.clear = stampFrom(state.value(QStringLiteral("clear")));
    for (const QJsonValue &value : state.value(QStringLiteral("undone")).toArray()) {
        if (const auto stamp = stampFrom(value))
            merge.undone.append(*stamp);
    }
    for (const QJsonValue &value : state.value(QStringLiteral("actions")).toArray()) {
        const QJsonArray pair = value.toArray();
        DoodleActionPtr action = DoodleTranslate::doodleActionFromString(pair.at(1).toString());
        if (action && doodleIsDrawnActionType(action->actionType()))
            merge.actions.append(
                {pair.at(0).toString(), std::move(action), anchorFrom(pair.at(2))});
    }
}

void DoodleBoardCore::beginMerge(DoodleStateMerge &merge)
{
    merge.begun = true;
    observeClock(merge.clock);
    // One redraw for the whole merge, of what it changed.
    beginBatch();
    if (merge.clear && applyClear(*merge.clear))
        m_batch->whole = true;
    mergeUndone(merge.undone);
    // The state's drawings without a stamp came after its clear; a later clear
    // here removes them, as it did the ones this board held. A copy of one
    // this board holds is taken only beyond as many as are here.
    merge.takeUnstamped = merge.clear == m_lastClear;
    for (const DoodleCacheEntry &entry : m_doodlePathCache.entries()) {
        if (entry.action->seqNo() == 0)
            ++merge.held[entryHash(entry.owner, *entry.action)];
    }
}

void DoodleBoardCore::mergeUndone(const QList<DoodleStamp> &undone)
{
    for (const DoodleStamp &stamp : undone) {
        bool present = false;
        const qsizetype index = insertionIndex(stamp, &present);
        if (present)
            removeEntry(index);
        else
            rememberUndone(stamp);
    }
}

bool DoodleBoardCore::mergeSlice(DoodleStateMerge &merge, const QDeadlineTimer &deadline)
{
    for (; merge.next < merge.actions.size(); ++merge.next) {
        if (deadline.hasExpired())
            return false;
        mergeEntry(merge, merge.actions.at(merge.next));
    }
    return true;
}

void DoodleBoardCore::mergeEntry(DoodleStateMerge &merge, const DoodleStateEntry &entry)
{
    const QString &owner = entry.owner;
    const DoodleActionPtr &action = entry.action;
    if (m_muted.contains(owner))
        return;
    if (action->seqNo() != 0) {
        merge.previous = DoodleStamp{action->seqNo(), owner};
        if (withinLimits(owner, *action))
            receiveDrawing(action, owner);
        return;
    }
    if (entry.anchor) {
        mergeAnchored(owner, action, *entry.anchor);
        return;
    }
    qsizetype &copies = merge.held[entryHash(owner, *action)];
    if (copies > 0)
        --copies;
    else if (merge.takeUnstamped && withinLimits(owner, *action))
        insertEntry(unstampedIndex(merge.previous), action, owner);
}

// A large state is read on the worker, then taken in a slice of the GUI
// thread at a time, in the order the states came.
void DoodleBoardCore::mergeOnWorker(const std::shared_ptr<DoodleStateMerge> &merge,
                                    const QString &text)
{
    m_merges.append(merge);
    m_background.run([merge, text] { decodeState(text, *merge); },
                     [this, decoded = merge]() mutable {
                         decoded->decoded = true;
                         decoded.reset(); // the queue holds it, and lets the worker free it
                         continueMerges();
                     });
}

void DoodleBoardCore::continueMerges()
{
    const QDeadlineTimer slice(kMergeSliceMs);
    while (!m_merges.isEmpty() && m_merges.first()->decoded) {
        DoodleStateMerge &merge = *m_merges.first();
        if (!merge.valid) {
            qCWarning(lcDoodle, "%s; not merged", qPrintable(merge.problem));
        } else {
            if (!merge.begun)
                beginMerge(merge);
            // The redraw that ends a merge gets a turn of its own.
            if (!mergeSlice(merge, slice) || slice.hasExpired()) {
                m_background.later([this] { continueMerges(); });
                return;
            }
            endBatch();
        }
        // Thousands of drawings it brought that the board held already: freed
        // on the worker.
        m_background.run([done = m_merges.takeFirst()] {}, {});
    }
    if (isPictureSettled())
        notifyPictureSettled();
}

// A drawing of the shared order is known by its place there. A copy this board
// holds at an earlier place (it joined late, or was away, and could not know
// what came before) moves to the later one: boards that compare states end
// with one place.
void DoodleBoardCore::mergeAnchored(const QString &owner, const DoodleActionPtr &action,
                                    const DoodleAnchor &anchor)
{
    bool present = false;
    anchoredIndex(anchor, &present);
    if (present || (m_lastClear && anchor.after < *m_lastClear))
        return;
    const qsizetype earlier = earlierCopy(owner, *action, anchor);
    if (earlier >= 0)
        removeEntry(earlier);
    else if (!withinLimits(owner, *action))
        return;
    insertEntry(anchoredIndex(anchor, &present), action, owner, anchor);
}

qsizetype DoodleBoardCore::earlierCopy(const QString &owner, const DoodleAction &action,
                                       const DoodleAnchor &anchor) const
{
    const quint64 content = entryHash(owner, action);
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const DoodleCacheEntry &entry = entries.at(i);
        const std::optional<DoodleAnchor> held = anchorOf(entry);
        if (entry.action->seqNo() == 0 && entry.owner == owner && (!held || *held < anchor) &&
            entryHash(owner, *entry.action) == content)
            return i;
    }
    return -1;
}

// Where a drawing anchored in the shared order goes: after every stamped entry
// up to its anchor, every anchored one before it, and unanchored ones, which
// stay where they arrived. `present`: one is there already.
qsizetype DoodleBoardCore::anchoredIndex(const DoodleAnchor &anchor, bool *present) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    qsizetype index = entries.size();
    *present = false;
    for (; index > 0; --index) {
        const DoodleCacheEntry &entry = entries.at(index - 1);
        const std::optional<DoodleAnchor> other =
            entry.action->seqNo() != 0 ? DoodleAnchor{stampOf(entry), 0} : anchorOf(entry);
        *present = other && entry.action->seqNo() == 0 && *other == anchor;
        if (*present)
            return index - 1;
        // A stamped entry goes before the drawings anchored to it.
        if (!other ||
            (entry.action->seqNo() != 0 ? !(anchor.after < other->after) : !(anchor < *other)))
            break;
    }
    return index;
}

// Every board hears the same order: a stamped drawing or clear is the anchor
// of the drawings without a stamp that follow it, numbered from 0.
void DoodleBoardCore::noteChannelOrder(const DoodleAction &action, const QString &sender)
{
    const qint64 type = action.actionType();
    const bool drawn = doodleIsDrawnActionType(type);
    if (!drawn && (type != DoodleActionTypeClean || action.seqNo() == 0))
        return;
    if (action.seqNo() == 0) {
        m_received = DoodleAnchor{m_channelAnchor, m_channelRank++};
        return;
    }
    const DoodleStamp stamp{action.seqNo(), sender};
    if (stamp == m_channelAnchor) // a copy sent again
        return;
    m_channelAnchor = stamp;
    m_channelRank = 0;
}

void DoodleBoardCore::noteEcho(const QString &text)
{
    if (!textWithinLimit(m_userId, text))
        return;
    if (const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(text))
        noteChannelOrder(*action, m_userId);
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
    m_channelAnchor = DoodleStamp();
    m_channelRank = 0;
}
