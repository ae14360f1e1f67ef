// Board controller: one order on every board (order stamps), the state a
// board hands to another, its fingerprint, and moderation.
#include "DoodleLayout_p.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

#include <QDataStream>
#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

constexpr qsizetype kMaxStateBytes = 64 * 1024 * 1024;
constexpr qsizetype kMaxTombstones = 100000;
constexpr quint64 kLargestStamp = (quint64(1) << 53) - 1;

// FNV-1a: the same on every platform and Qt version, unlike qHash.
quint64 fnv1a(const QByteArray &bytes)
{
    quint64 hash = 0xcbf29ce484222325ULL;
    for (const char byte : bytes) {
        hash ^= quint8(byte);
        hash *= 0x100000001b3ULL;
    }
    return hash;
}

// What a drawing from a peer without stamps shows, as bytes: its fields in a
// fixed order (encoding it would write the encoder's log lines).
QByteArray drawingBytes(const QString &owner, const DoodleAction &a)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << owner << a.actionType() << a.userId() << HexadecimalColorFromUIColor(a.brushColor())
        << a.brushWidth() << a.x() << a.y() << a.endX() << a.endY() << a.width() << a.height()
        << a.text() << a.textSize();
    for (const DoodlePoint &point : a.pathPoints())
        out << point.toStringList();
    return bytes;
}

quint64 stampHash(char kind, const DoodleStamp &stamp)
{
    return fnv1a(QByteArray(1, kind) + QByteArray::number(stamp.clock) + '/' +
                 stamp.sender.toUtf8());
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

DoodleStamp DoodleLayoutPrivate::stampOf(const DoodleCacheEntry &entry)
{
    return DoodleStamp{entry.action->seqNo(), entry.owner};
}

void DoodleLayoutPrivate::observeClock(quint64 clock)
{
    m_clock = std::min(std::max(m_clock, clock), kLargestStamp);
}

quint64 DoodleLayoutPrivate::nextStamp()
{
    observeClock(m_clock + 1);
    return m_clock;
}

quint64 DoodleLayoutPrivate::entryHash(const DoodleCacheEntry &entry) const
{
    if (entry.action->seqNo() != 0)
        return stampHash('d', stampOf(entry));
    // A drawing from a peer without stamps counts by what it shows.
    return fnv1a(drawingBytes(entry.owner, *entry.action));
}

void DoodleLayoutPrivate::recomputeFingerprint()
{
    m_fingerprint = m_lastClear ? stampHash('c', *m_lastClear) : 0;
    for (const DoodleCacheEntry &entry : m_doodlePathCache.entries())
        m_fingerprint ^= entryHash(entry);
}

// Where a stamped drawing goes: after every entry ordered before it. Entries
// from peers without stamps stay where they arrived.
qsizetype DoodleLayoutPrivate::insertionIndex(const DoodleStamp &stamp, bool *duplicate) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    qsizetype index = entries.size();
    *duplicate = false;
    while (index > 0 && entries.at(index - 1).action->seqNo() != 0) {
        const DoodleStamp other = stampOf(entries.at(index - 1));
        if (other == stamp) {
            *duplicate = true;
            return index - 1;
        }
        if (other < stamp)
            break;
        --index;
    }
    return index;
}

bool DoodleLayoutPrivate::receiveDrawing(const DoodleActionPtr &action, const QString &owner,
                                         bool draw)
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
    m_doodlePathCache.insertAction(index, action, owner);
    m_fingerprint ^= entryHash(m_doodlePathCache.entries().at(index));
    if (draw && q->isViewLoaded())
        placeEntry(index);
    return true;
}

void DoodleLayoutPrivate::placeEntry(qsizetype index)
{
    if (index == m_doodlePathCache.size() - 1) {
        drawEntry(index);
        noteAppended();
        return;
    }
    // A late arrival: only the region it covers is drawn again, in order.
    ZQDoodleDrawView *canvas = cacheSurface();
    const DoodleAction &action = *m_doodlePathCache.entries().at(index).action;
    canvas->setMeasuring(true);
    const QRect rect = paint(action);
    canvas->setMeasuring(false);
    m_doodlePathCache.setDrawnRect(index, rect);
    if (!overlapsLaterEntries(index, rect)) {
        // Nothing ordered after it touches its pixels, so drawing it last gives
        // the same picture; savepoints that hold those later ones get it too.
        paint(action);
        const QSize pixels = canvas->cacheImage().size();
        for (DoodleSavepoint &save : m_saves) {
            if (save.count > index && save.picture.size() != pixels) {
                save.count = -1;
            } else if (save.count > index) {
                canvas->setTarget(&save.picture);
                paint(action);
                canvas->setTarget(nullptr);
                ++save.count;
            }
        }
        return;
    }
    redrawRegion(rect, index, 1);
}

bool DoodleLayoutPrivate::overlapsLaterEntries(qsizetype index, const QRect &rect) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = index + 1; i < entries.size(); ++i) {
        if (entries.at(i).drawnRect.intersects(rect))
            return true;
    }
    return false;
}

void DoodleLayoutPrivate::removeEntry(qsizetype index, bool draw)
{
    const DoodleCacheEntry removed = m_doodlePathCache.takeAt(index);
    if (!removed.action)
        return;
    m_fingerprint ^= entryHash(removed);
    if (removed.action->seqNo() != 0)
        rememberUndone(stampOf(removed));
    if (draw && q->isViewLoaded())
        redrawRegion(removed.drawnRect, index, -1);
}

void DoodleLayoutPrivate::rememberUndone(const DoodleStamp &stamp)
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

qsizetype DoodleLayoutPrivate::lastIndexOwnedBy(const QString &owner) const
{
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        if (!entries.at(i).owner.isNull() && entries.at(i).owner == owner)
            return i;
    }
    return -1;
}

void DoodleLayoutPrivate::undoStamped(const QString &owner, quint64 clock)
{
    observeClock(clock);
    const DoodleStamp stamp{clock, owner};
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        if (entries.at(i).action->seqNo() == clock && entries.at(i).owner == owner) {
            removeEntry(i, true);
            return;
        }
    }
    rememberUndone(stamp); // its drawing may still be on its way
}

bool DoodleLayoutPrivate::applyClear(const DoodleStamp &stamp)
{
    observeClock(stamp.clock);
    if (m_lastClear && !(*m_lastClear < stamp))
        return false;
    m_lastClear = stamp;
    // Everything ordered before the clear goes, and drawings from peers without stamps.
    m_doodlePathCache.removeEntriesIf([&stamp](const DoodleCacheEntry &entry) {
        return entry.action->seqNo() == 0 || stampOf(entry) < stamp;
    });
    m_undone.removeIf([&stamp](const DoodleStamp &s) { return s < stamp; });
    recomputeFingerprint();
    return true;
}

void DoodleLayoutPrivate::redrawAfterClear()
{
    if (!q->isViewLoaded())
        return;
    if (m_doodlePathCache.size() == 0)
        q->cleanDoodleCaches();
    else
        q->drawCachePath();
}

quint64 DoodleLayout::clock() const
{
    return d->m_clock;
}

quint64 DoodleLayout::fingerprint() const
{
    return d->m_fingerprint;
}

QString DoodleLayout::exportState() const
{
    QJsonArray actions;
    qsizetype bytes = 0;
    const QList<DoodleCacheEntry> &entries = d->m_doodlePathCache.entries();
    // The newest drawings first, up to the bound; then back in order.
    for (qsizetype i = entries.size() - 1; i >= 0; --i) {
        if (entries.at(i).action->seqNo() == 0)
            continue;
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
    for (const DoodleStamp &stamp : std::as_const(d->m_undone))
        undone.append(stampJson(stamp));
    QJsonObject state{{QStringLiteral("doodle_state"), 1},
                      {QStringLiteral("clock"), qint64(d->m_clock)},
                      {QStringLiteral("undone"), undone},
                      {QStringLiteral("actions"), actions}};
    if (d->m_lastClear)
        state.insert(QStringLiteral("clear"), stampJson(*d->m_lastClear));
    return QString::fromUtf8(QJsonDocument(state).toJson(QJsonDocument::Compact));
}

bool DoodleLayout::mergeState(const QString &text)
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
    d->observeClock(quint64(std::max<qint64>(0, state.value(QStringLiteral("clock")).toInteger())));
    if (const auto clear = stampFrom(state.value(QStringLiteral("clear"))))
        d->applyClear(*clear);
    d->mergeUndone(state.value(QStringLiteral("undone")).toArray());
    d->mergeActions(state.value(QStringLiteral("actions")).toArray());
    // One redraw for the whole merge.
    d->redrawAfterClear();
    return true;
}

void DoodleLayoutPrivate::mergeUndone(const QJsonArray &undone)
{
    for (const QJsonValue &value : undone) {
        const auto stamp = stampFrom(value);
        if (!stamp)
            continue;
        bool present = false;
        const qsizetype index = insertionIndex(*stamp, &present);
        if (present)
            removeEntry(index, false);
        else
            rememberUndone(*stamp);
    }
}

void DoodleLayoutPrivate::mergeActions(const QJsonArray &actions)
{
    for (const QJsonValue &value : actions) {
        const QJsonArray pair = value.toArray();
        const QString owner = pair.at(0).toString();
        const DoodleActionPtr action =
            DoodleTranslate::doodleActionFromString(pair.at(1).toString());
        if (!action || action->seqNo() == 0 || !doodleIsDrawnActionType(action->actionType()) ||
            m_muted.contains(owner) || !withinLimits(owner, *action))
            continue;
        receiveDrawing(action, owner, false);
    }
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
    bool removed = false;
    for (qsizetype i = d->lastIndexOwnedBy(userId); i >= 0; i = d->lastIndexOwnedBy(userId)) {
        d->removeEntry(i, false);
        removed = true;
    }
    if (removed)
        d->redrawAfterClear();
}

void DoodleLayoutPrivate::forgetOrder()
{
    // The clock keeps counting: stamps this board sends never repeat.
    m_lastClear.reset();
    m_undone.clear();
}
