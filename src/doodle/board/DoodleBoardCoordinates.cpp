// The board's core: conversions between normalised ("logic", -1 to 1 on each
// axis, sizes against the width) and the board's ("normal") coordinates.
#include "DoodleBoardCore_p.h"

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
