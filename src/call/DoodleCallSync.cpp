// Broker client: the catch-up exchange. Boards compare fingerprints in a few
// bytes and send their whole state only when the difference lasts; merging
// states is their union, so a state that arrives twice, late or crossed by
// another changes nothing that it should not.
//
// A message on "doodle/CALL/USER/sync" is one line of compact JSON, so that
// a line-based observer sees one message a line; a state travels as a JSON
// text in "state", as the wire form nests its texts:
//   {"doodle_sync":1,"kind":"join","fingerprint":HEX}         a joiner asks for the board
//   {"doodle_sync":1,"kind":"fingerprint","fingerprint":HEX}  the board changed, or a reconnection
//   {"doodle_sync":1,"kind":"state","to":[USER...],"fingerprint":HEX,"state":TEXT[,"reply":true]}
//   {"doodle_sync":1,"kind":"leave"}                          gone (also the broker's will)
// With a board shape for the call every message also carries
//   "aspect":[W,H],"aspect_since":MS,"aspect_from":USER      the shape and its proposal
// Earlier boards sent the state's text after a line break; it is still read.
#include "DoodleCall_p.h"

#include <doodle/support/DoodleLog_p.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <utility>

namespace {

// A board announces its fingerprint once it has not changed for this long.
constexpr qint64 kQuietMs = 300;
// A difference that lasts this long, with this board quiet, is caught up.
constexpr qint64 kSettleMs = 600;
// A message holds at most a state (64 MiB of text), escaped once more.
constexpr qsizetype kMaxSyncBytes = 192 * 1024 * 1024;

QString hexFingerprint(quint64 fingerprint)
{
    return QStringLiteral("%1").arg(fingerprint, 16, 16, QLatin1Char('0'));
}

} // namespace

void DoodleCallPrivate::publishSync(QJsonObject header)
{
    header.insert(QStringLiteral("doodle_sync"), 1);
    addAspect(header);
    const QByteArray payload = QJsonDocument(header).toJson(QJsonDocument::Compact);
    if (!m_client.publish(syncTopic(), payload))
        qCWarning(lcDoodle, "a catch-up message could not be sent to the call");
}

void DoodleCallPrivate::announce(const QString &kind)
{
    if (!m_board->isAlive())
        return;
    QJsonObject header{{QStringLiteral("kind"), kind}};
    if (kind != QLatin1String("leave")) {
        m_announced = m_board->fingerprint();
        m_hasAnnounced = true;
        header.insert(QStringLiteral("fingerprint"), hexFingerprint(m_announced));
    }
    publishSync(header);
}

void DoodleCallPrivate::pushState(const QStringList &to, bool reply)
{
    if (!m_board->isAlive() || to.isEmpty())
        return;
    // The state carries the fingerprint it has: it counts as an announcement.
    m_announced = m_board->fingerprint();
    m_hasAnnounced = true;
    QJsonObject header{{QStringLiteral("kind"), QStringLiteral("state")},
                       {QStringLiteral("to"), QJsonArray::fromStringList(to)},
                       {QStringLiteral("fingerprint"), hexFingerprint(m_announced)}};
    if (reply)
        header.insert(QStringLiteral("reply"), true);
    // Within the board's message budget: in parts, merged when the last one came.
    const QStringList parts = m_board->exportStateParts();
    DOODLE_LOG(QStringLiteral("call: state in %1 part(s) to %2%3")
                   .arg(parts.size())
                   .arg(to.join(QLatin1Char(',')), reply ? QStringLiteral(" (reply)") : QString()));
    for (const QString &part : parts) {
        header.insert(QStringLiteral("state"), part);
        publishSync(header);
    }
}

void DoodleCallPrivate::onSync(const QString &sender, const QByteArray &payload)
{
    const qsizetype newline = payload.indexOf('\n');
    const qsizetype headerEnd = newline < 0 ? payload.size() : newline;
    const QJsonObject header = headerEnd <= kMaxSyncBytes
                                   ? QJsonDocument::fromJson(payload.left(headerEnd)).object()
                                   : QJsonObject();
    if (header.value(QStringLiteral("doodle_sync")).toInt() != 1) {
        qCWarning(lcDoodle, "a catch-up message from %s is not one; ignored", qPrintable(sender));
        return;
    }
    const QString kind = header.value(QStringLiteral("kind")).toString();
    considerAspect(sender, header);
    if (kind == QLatin1String("leave")) {
        m_peers.remove(sender);
        return;
    }
    bool valid = false;
    const quint64 fingerprint =
        header.value(QStringLiteral("fingerprint")).toString().toULongLong(&valid, 16);
    if (!valid) {
        qCWarning(lcDoodle, "a catch-up message from %s has no fingerprint; ignored",
                  qPrintable(sender));
        return;
    }
    notePeer(sender, fingerprint);
    if (kind == QLatin1String("join")) {
        // Everyone tells the joiner where it stands; one of them hands it the board.
        announce(QStringLiteral("fingerprint"));
        if (answersJoinOf(sender))
            pushState({sender}, false);
    } else if (kind == QLatin1String("state")) {
        const QStringList to = header.value(QStringLiteral("to")).toVariant().toStringList();
        if (to.contains(m_user))
            onState(sender, header,
                    newline < 0 ? header.value(QStringLiteral("state")).toString()
                                : QString::fromUtf8(payload.mid(newline + 1)));
    }
}

void DoodleCallPrivate::onState(const QString &sender, const QJsonObject &header,
                                const QString &state)
{
    if (!m_board->isAlive() || !m_board->mergeState(state))
        return;
    DOODLE_LOG(QStringLiteral("call: merged the state of %1").arg(sender));
    DoodleCallPeer &peer = m_peers[sender];
    peer.caughtUp = true;
    // A reply is never answered, so two boards that cannot agree stop there.
    peer.answerWhenMerged = !header.value(QStringLiteral("reply")).toBool();
    answerMergedStates();
}

// Still different once a state is merged (a large one takes a few turns of
// the event loop): this board holds what its sender lacks.
void DoodleCallPrivate::answerMergedStates()
{
    if (!m_board->isPictureSettled())
        return;
    const quint64 fingerprint = m_board->fingerprint();
    QStringList differ;
    for (auto it = m_peers.begin(); it != m_peers.end(); ++it) {
        if (std::exchange(it->answerWhenMerged, false) && it->fingerprint != fingerprint)
            differ << it.key();
    }
    pushState(differ, true);
}

void DoodleCallPrivate::notePeer(const QString &sender, quint64 fingerprint)
{
    DoodleCallPeer &peer = m_peers[sender];
    peer.fingerprint = fingerprint;
    peer.since.start();
    peer.caughtUp = false;
}

bool DoodleCallPrivate::answersJoinOf(const QString &joiner) const
{
    // The participant with the smallest id this board knows of answers; should
    // two boards know different participants, both answer, which is harmless.
    QString smallest = m_user;
    for (auto it = m_peers.cbegin(); it != m_peers.cend(); ++it) {
        if (it.key() != joiner && it.key() < smallest)
            smallest = it.key();
    }
    return smallest == m_user;
}

void DoodleCallPrivate::poll()
{
    if (!m_board->isAlive())
        return;
    answerMergedStates();
    const quint64 fingerprint = m_board->fingerprint();
    if (fingerprint != m_seenFingerprint) {
        m_seenFingerprint = fingerprint;
        m_stableSince.restart();
    }
    if (!m_connected || m_stableSince.elapsed() < kQuietMs)
        return;
    if (!m_hasAnnounced || m_announced != fingerprint)
        announce(QStringLiteral("fingerprint"));
    if (m_stableSince.elapsed() < kSettleMs)
        return;
    QStringList behind;
    for (auto it = m_peers.begin(); it != m_peers.end(); ++it) {
        DoodleCallPeer &peer = it.value();
        if (!peer.caughtUp && peer.fingerprint != fingerprint &&
            peer.since.elapsed() >= kSettleMs) {
            peer.caughtUp = true;
            behind << it.key();
        }
    }
    pushState(behind, false);
}

void DoodleCall::proposeBoardAspect(const QSizeF &aspect, bool fixed)
{
    if (aspect.isEmpty() || !qIsFinite(aspect.width()) || !qIsFinite(aspect.height()))
        return;
    d->m_aspect = aspect;
    d->m_aspectSince = QDateTime::currentMSecsSinceEpoch();
    d->m_aspectFrom = d->m_user;
    d->m_aspectFixed = fixed;
    if (d->m_board->isAlive())
        d->m_board->setBoardAspect(aspect);
}

QSizeF DoodleCall::boardAspect() const
{
    return d->m_aspect;
}

void DoodleCallPrivate::addAspect(QJsonObject &header) const
{
    if (m_aspect.isEmpty())
        return;
    header.insert(QStringLiteral("aspect"), QJsonArray{m_aspect.width(), m_aspect.height()});
    header.insert(QStringLiteral("aspect_since"), m_aspectSince);
    header.insert(QStringLiteral("aspect_from"), m_aspectFrom);
}

void DoodleCallPrivate::considerAspect(const QString &sender, const QJsonObject &header)
{
    const QJsonArray pair = header.value(QStringLiteral("aspect")).toArray();
    if (m_aspect.isEmpty() || m_aspectFixed || pair.size() != 2)
        return;
    const QSizeF aspect(pair.at(0).toDouble(), pair.at(1).toDouble());
    const qint64 since = header.value(QStringLiteral("aspect_since")).toInteger(-1);
    const QString from = header.value(QStringLiteral("aspect_from")).toString();
    if (aspect.isEmpty() || !qIsFinite(aspect.width()) || !qIsFinite(aspect.height()) ||
        since < 0 || from.isEmpty()) {
        qCWarning(lcDoodle, "a board shape from %s is not one; ignored", qPrintable(sender));
        return;
    }
    if (std::make_pair(since, from) >= std::make_pair(m_aspectSince, m_aspectFrom))
        return;
    DOODLE_LOG(QStringLiteral("call: the board's shape is %1's, %2:%3")
                   .arg(from)
                   .arg(aspect.width())
                   .arg(aspect.height()));
    m_aspect = aspect;
    m_aspectSince = since;
    m_aspectFrom = from;
    if (m_board->isAlive())
        m_board->setBoardAspect(aspect);
}

QStringList DoodleCall::participants() const
{
    QStringList names = d->m_peers.keys();
    names.sort();
    return names;
}

bool DoodleCall::isSettled() const
{
    if (!d->m_connected || !d->m_board->isAlive() || d->m_client.hasUndelivered())
        return false;
    const quint64 fingerprint = d->m_board->fingerprint();
    if (!d->m_hasAnnounced || d->m_announced != fingerprint)
        return false;
    return std::all_of(
        d->m_peers.cbegin(), d->m_peers.cend(),
        [fingerprint](const DoodleCallPeer &peer) { return peer.fingerprint == fingerprint; });
}
