// The board's core: the largest text this board sends. A stroke over it goes
// out as consecutive strokes within it, each starting where the one before
// ended, so that every board, old ones included, draws the same line; one
// undo takes back all of them. Any other action over it is refused here.
#include "DoodleBoardCore_p.h"

#include <doodle/model/DoodleTranslate.h>
#include <doodle/support/DoodleLog_p.h>

namespace {

constexpr qsizetype kPartGroupsKept = 4096;

qsizetype textBytes(const DoodleAction &action)
{
    const auto copy = std::make_shared<DoodleAction>(action);
    return DoodleTranslate::stringFromDoodleAction(copy).toUtf8().size();
}

DoodleActionPtr partOf(const DoodleAction &whole, qsizetype from, qsizetype count)
{
    auto part = std::make_shared<DoodleAction>(whole);
    DoodlePointList points;
    points.reserve(count);
    for (qsizetype i = from; i < from + count; ++i)
        points.append(whole.pathPoints().at(i));
    part->setPoints(points);
    return part;
}

} // namespace

// The parts of a stroke, each within the budget; none when two points do not fit.
QList<DoodleActionPtr> DoodleBoardCore::strokeParts(const DoodleAction &whole) const
{
    const qsizetype total = whole.pathPoints().size();
    const qsizetype base = textBytes(*partOf(whole, 0, 0));
    const double perPoint = double(textBytes(whole) - base) / double(std::max<qsizetype>(total, 1));
    QList<DoodleActionPtr> parts;
    for (qsizetype from = 0; from < total - 1;) {
        qsizetype count = qsizetype(double(m_messageBudget - base) / (perPoint * 1.05));
        count = std::clamp<qsizetype>(count, 2, total - from);
        DoodleActionPtr part = partOf(whole, from, count);
        while (count > 2 && textBytes(*part) > m_messageBudget) {
            count -= std::max<qsizetype>(1, count / 10);
            part = partOf(whole, from, count);
        }
        if (textBytes(*part) > m_messageBudget)
            return {};
        parts << part;
        from += count - 1; // the next part starts at this one's last point
    }
    return parts;
}

bool DoodleBoardCore::commitWithinBudget(const DoodleActionPtr &action)
{
    const qsizetype bytes =
        m_messageBudget > 0 ? DoodleTranslate::stringFromDoodleAction(action).toUtf8().size() : 0;
    if (bytes <= m_messageBudget) {
        actionGenerated(action);
        receiveDrawing(action, m_userId);
        return true;
    }
    const qint64 type = action->actionType();
    const bool stroke = type == DoodleActionTypeStroke || type == DoodleActionTypeEraser;
    const QList<DoodleActionPtr> parts = stroke ? strokeParts(*action) : QList<DoodleActionPtr>();
    if (parts.isEmpty()) {
        qCWarning(lcDoodle,
                  "not sent: the action's text of %lld bytes is over the message "
                  "budget of %lld bytes",
                  qint64(bytes), qint64(m_messageBudget));
        return false;
    }
    QList<quint64> stamps;
    for (const DoodleActionPtr &part : parts) {
        if (!stamps.isEmpty())
            part->setSeqNo(nextStamp());
        stamps << part->seqNo();
        actionGenerated(part);
        receiveDrawing(part, m_userId);
    }
    if (m_partsBefore.size() >= kPartGroupsKept)
        m_partsBefore.clear();
    stamps.removeLast();
    m_partsBefore.insert(parts.last()->seqNo(), stamps);
    return true;
}

void DoodleBoardCore::undoEarlierParts(quint64 lastPart)
{
    // Newest first: a board without stamps takes back the sender's last
    // drawing for each undo, which is then exactly the next part.
    const QList<quint64> before = m_partsBefore.take(lastPart);
    const QList<DoodleCacheEntry> &entries = m_doodlePathCache.entries();
    for (auto stamp = before.crbegin(); stamp != before.crend(); ++stamp) {
        const qsizetype index = lastIndexOwnedBy(m_userId);
        if (index < 0 || entries.at(index).action->seqNo() != *stamp)
            return; // a part already gone: an undo now would take something else
        removeEntry(index);
        auto undo = std::make_shared<DoodleAction>();
        undo->setActionType(DoodleActionTypeUndo);
        undo->setUserId(m_userId);
        undo->setSeqNo(*stamp);
        actionGenerated(undo);
    }
}

qsizetype DoodleBoardCore::reportPointLimit() const
{
    // A report's point costs at most two numbers of nine characters and
    // their commas; the rest of its text stays under 512 bytes.
    constexpr qsizetype kReportPointsMax = 256;
    if (m_messageBudget <= 0)
        return kReportPointsMax;
    return std::min<qsizetype>(kReportPointsMax, (m_messageBudget - 512) / 24);
}
