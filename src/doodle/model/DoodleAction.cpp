#include "DoodleAction.h"

#include <doodle/support/DoodleLog_p.h>

void DoodleAction::addPointWithPositionX(float x, float y, qint32 timeInterval)
{
    // Inclusive bounds; NaN fails both comparisons and is logged as well.
    if (!(x >= -1.0f && x <= 1.0f)) {
        DOODLE_LOG(QStringLiteral("DoodleAction addPoint, x:") + DoodleNumber::printfF(double(x)) +
                   QStringLiteral(" value is not in (-1, 1)"));
    }
    if (!(y >= -1.0f && y <= 1.0f)) {
        DOODLE_LOG(QStringLiteral("DoodleAction addPoint, y:") + DoodleNumber::printfF(double(y)) +
                   QStringLiteral(" value is not in (-1, 1)"));
    }
    if (timeInterval < 0) {
        DOODLE_LOG(QStringLiteral("DoodleAction addPoint, timeInterval:") +
                   DoodleNumber::printfD(timeInterval) + QStringLiteral(" cannot be less than 0"));
    }
    m_points.append(DoodlePoint(timeInterval, x, y));
}
