// The board's core: a state larger than the message budget travels in
// parts, each a slice of the state's text in a small JSON object of its own.
// The receiver holds the parts of a few hand-offs, bounded in count, bytes
// and time, and merges a state once, when its last part comes.
#include "DoodleBoardCore_p.h"

#include <doodle/support/DoodleLog_p.h>

#include <QAtomicInteger>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const QString kPartKey = QStringLiteral("doodle_state_part");
// Room a channel's own wrapping of a part may take (the call's catch-up header).
constexpr qsizetype kWrapperRoom = 1024;
constexpr qsizetype kLeastSlice = 256;
constexpr qsizetype kMarkerWithin = 64;
constexpr qsizetype kHandOffsHeld = 4;
constexpr qsizetype kPartsMax = 1 << 16;
constexpr qsizetype kHeldBytesMax = 64 * 1024 * 1024;
constexpr qint64 kHandOffMs = 30000; // an incomplete hand-off older than this is dropped

} // namespace

QStringList DoodleBoardCore::exportStateParts() const
{
    const QString state = exportState();
    if (m_messageBudget <= 0 || state.toUtf8().size() + kWrapperRoom <= m_messageBudget)
        return {state};
    // A packed state is base64 inside a small object: one byte a character.
    const qsizetype slice = std::max(kLeastSlice, m_messageBudget - 2 * kWrapperRoom);
    const qsizetype count = (state.size() + slice - 1) / slice;
    // Unique across this board's hand-offs and its restarts.
    static QAtomicInteger<quint64> handOffs;
    const QString id = QStringLiteral("%1-%2-%3")
                           .arg(m_userId)
                           .arg(QDateTime::currentMSecsSinceEpoch())
                           .arg(handOffs.fetchAndAddRelaxed(1));
    QStringList parts;
    for (qsizetype index = 0; index < count; ++index) {
        const QJsonObject part{{kPartKey, 1},
                               {QStringLiteral("id"), id},
                               {QStringLiteral("index"), index},
                               {QStringLiteral("count"), count},
                               {QStringLiteral("slice"), state.mid(index * slice, slice)}};
        parts << QString::fromUtf8(QJsonDocument(part).toJson(QJsonDocument::Compact));
    }
    return parts;
}

bool DoodleBoardCore::mergeStateText(const QString &text)
{
    // Members are written in key order: the marker comes before the slice.
    if (!QStringView(text).left(kMarkerWithin).contains(QString(QLatin1Char('"') + kPartKey)))
        return mergeState(text);
    const std::optional<QString> whole = takeStatePart(text);
    return whole && mergeState(*whole);
}

std::optional<QString> DoodleBoardCore::takeStatePart(const QString &text)
{
    const QJsonObject part = QJsonDocument::fromJson(text.toUtf8()).object();
    const QString id = part.value(QStringLiteral("id")).toString();
    const qint64 count = part.value(QStringLiteral("count")).toInteger();
    const qint64 index = part.value(QStringLiteral("index")).toInteger(-1);
    const QString data = part.value(QStringLiteral("slice")).toString();
    if (id.isEmpty() || count < 1 || count > kPartsMax || index < 0 || index >= count) {
        qCWarning(lcDoodle, "a part of a state is malformed; dropped");
        return std::nullopt;
    }
    dropStaleHandOffs();
    auto held = std::find_if(m_handOffs.begin(), m_handOffs.end(),
                             [&id](const DoodleHandOff &h) { return h.id == id; });
    if (held == m_handOffs.end()) {
        if (m_handOffs.size() >= kHandOffsHeld) {
            qCWarning(lcDoodle, "an incomplete state %s dropped for a newer one",
                      qPrintable(m_handOffs.first().id));
            m_handOffs.removeFirst();
        }
        m_handOffs.append({id, QList<QString>(count), 0, 0, {}});
        held = std::prev(m_handOffs.end());
        held->since.start();
    }
    if (held->parts.size() != count || !held->parts.at(index).isNull())
        return std::nullopt; // a copy, or a part that does not belong
    held->parts[index] = data.isNull() ? QStringLiteral("") : data;
    held->bytes += data.size();
    ++held->have;
    if (heldBytes() > kHeldBytesMax) {
        qCWarning(lcDoodle, "the parts of state %s pass %lld bytes; dropped", qPrintable(id),
                  static_cast<long long>(kHeldBytesMax));
        m_handOffs.erase(held);
        return std::nullopt;
    }
    if (held->have < count)
        return std::nullopt;
    const QString whole = held->parts.join(QString());
    m_handOffs.erase(held);
    return whole;
}

qsizetype DoodleBoardCore::heldBytes() const
{
    qsizetype bytes = 0;
    for (const DoodleHandOff &handOff : m_handOffs)
        bytes += handOff.bytes;
    return bytes;
}

void DoodleBoardCore::dropStaleHandOffs()
{
    m_handOffs.removeIf([](const DoodleHandOff &handOff) {
        const bool stale = handOff.since.elapsed() > kHandOffMs;
        if (stale)
            qCWarning(lcDoodle, "an incomplete state %s timed out; dropped",
                      qPrintable(handOff.id));
        return stale;
    });
}
