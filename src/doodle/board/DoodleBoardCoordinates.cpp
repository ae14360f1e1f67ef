// The board's core: conversions between normalised ("logic", -1 to 1 on each
// axis, sizes against the width) and the board's ("normal") coordinates.
#include "DoodleBoardCore_p.h"

#include <doodle/support/DoodleLog_p.h>

#include <cmath>

QPointF DoodleBoardCore::logicFromNormal(const QPointF &point) const
{
    const QSizeF size = boardSize();
    return QPointF(2 * point.x() / size.width() - 1, 2 * point.y() / size.height() - 1);
}

double DoodleBoardCore::logicFromNormalWidth(double width) const
{
    return 2 * width / boardSize().width();
}

double DoodleBoardCore::logicFromNormalHeight(double height) const
{
    return 2 * height / boardSize().height();
}

double DoodleBoardCore::normalFromLogicWidth(double width) const
{
    return boardSize().width() * width * 0.5;
}

QPointF DoodleBoardCore::normalFromLogicPosition(double x, double y) const
{
    const QSizeF size = boardSize();
    return QPointF((x + 1) * size.width() * 0.5, (y + 1) * size.height() * 0.5);
}

QRectF DoodleBoardCore::normalFromLogicRect(const QRectF &rect) const
{
    const QSizeF size = boardSize();
    return QRectF((rect.x() + 1) * size.width() * 0.5, (rect.y() + 1) * size.height() * 0.5,
                  rect.width() * size.width() * 0.5, rect.height() * size.height() * 0.5);
}

QPointF DoodleBoardCore::limitTouchPoint(const QPointF &point, const QSizeF &bounds) const
{
    // Keeps the touch one brush width inside the board so that a line is
    // never cut by the edge; the upper bound wins on a board narrower than 2b.
    const float b = float(m_brushWidth);
    const float x = float(point.x());
    const float y = float(point.y());
    const float x1 = b < x ? x : b;
    const float y1 = b < y ? y : b;
    const float width = float(bounds.width());
    const float height = float(bounds.height());
    const float x2 = (width - b) > x1 ? x1 : (width - b);
    const float y2 = (height - b) > y1 ? y1 : (height - b);
    return QPointF(double(x2), double(y2));
}

QSizeF DoodleBoardCore::usableAspect(const QSizeF &aspect)
{
    const bool usable = aspect.isValid() && std::isfinite(aspect.width()) &&
                        std::isfinite(aspect.height()) && !aspect.isEmpty() &&
                        aspect.width() / aspect.height() > 1e-3 &&
                        aspect.height() / aspect.width() > 1e-3;
    if (!aspect.isEmpty() && !usable)
        qCWarning(lcDoodle, "board aspect %gx%g ignored: not a usable shape", aspect.width(),
                  aspect.height());
    return usable ? aspect : QSizeF();
}

QRect DoodleBoardCore::letterboxed(const QSizeF &aspect, const QRect &all)
{
    if (aspect.isEmpty() || all.isEmpty())
        return all;
    // The largest rectangle of the aspect that fits, centred.
    const QSize fitted = aspect.scaled(QSizeF(all.size()), Qt::KeepAspectRatio).toSize();
    QRect frame(QPoint(), fitted.boundedTo(all.size()).expandedTo(QSize(1, 1)));
    frame.moveCenter(all.center());
    return frame;
}
