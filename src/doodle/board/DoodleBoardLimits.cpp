// The board's core: the limits on what other participants may send.
#include "DoodleBoardCore_p.h"

#include <doodle/support/DoodleLog_p.h>

namespace {

bool dropped(const QString &sender, const char *limit, qsizetype value, qsizetype maximum)
{
    if (value <= maximum)
        return false;
    const QString who = sender.isNull() ? QStringLiteral("an unnamed sender") : sender;
    qCWarning(lcDoodle).noquote() << QStringLiteral(
                                         "dropped an action from %1: %2 %3 over the limit %4")
                                         .arg(who, QLatin1String(limit))
                                         .arg(value)
                                         .arg(maximum);
    return true;
}

} // namespace

bool DoodleBoardCore::textWithinLimit(const QString &sender, const QString &text) const
{
    // UTF-8 takes at most three bytes per UTF-16 unit; count exactly only near the limit.
    qsizetype bytes = text.size();
    if (bytes * 3 > m_limits.textBytes)
        bytes = text.toUtf8().size();
    return !dropped(sender, "text bytes", bytes, m_limits.textBytes);
}

bool DoodleBoardCore::withinLimits(const QString &sender, const DoodleAction &action) const
{
    if (!doodleIsDrawnActionType(action.actionType()))
        return true;
    const qsizetype points = action.pathPoints().size();
    return !dropped(sender, "stroke points", points, m_limits.strokePoints) &&
           !dropped(sender, "text length", action.text().size(), m_limits.textLength) &&
           !dropped(sender, "cached drawings", m_doodlePathCache.actionsOwnedBy(sender) + 1,
                    m_limits.actionsPerAuthor) &&
           !dropped(sender, "cached points", m_doodlePathCache.pointsOwnedBy(sender) + points,
                    m_limits.pointsPerAuthor);
}
