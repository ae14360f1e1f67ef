// Board controller: conversions between normalised ("logic", -1 to 1 on each
// axis, sizes against the width) and view ("normal") coordinates.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayoutView.h"
#include "DoodleLayout_p.h"

QSizeF DoodleLayout::getScaleSize() const
{
    return d->m_canvas->boardSize();
}

QPointF DoodleLayout::logicFromNormal(const QPointF &point) const
{
    const QSizeF size = getScaleSize();
    return QPointF(2 * point.x() / size.width() - 1, 2 * point.y() / size.height() - 1);
}

double DoodleLayout::logicFromNormalWidth(double width) const
{
    return 2 * width / getScaleSize().width();
}

double DoodleLayout::logicFromNormalHeight(double height) const
{
    return 2 * height / getScaleSize().height();
}

double DoodleLayout::normalFromLogicWidth(double width) const
{
    return getScaleSize().width() * width * 0.5;
}

QPointF DoodleLayout::normalFromLogicPositionX(double x, double y) const
{
    const QSizeF size = getScaleSize();
    return QPointF((x + 1) * size.width() * 0.5, (y + 1) * size.height() * 0.5);
}

QRectF DoodleLayout::normalFromLogicRect(const QRectF &rect) const
{
    const QSizeF size = getScaleSize();
    return QRectF((rect.x() + 1) * size.width() * 0.5, (rect.y() + 1) * size.height() * 0.5,
                  rect.width() * size.width() * 0.5, rect.height() * size.height() * 0.5);
}

QPointF DoodleLayout::limitTouchPoint(const QPointF &point, const QWidget *view) const
{
    if (!view)
        return point;
    // Keeps the touch one brush width inside the view's frame so that a line is
    // never cut by the edge; the upper bound wins on a view narrower than 2b.
    const float b = float(d->m_brushWidth);
    const float x = float(point.x());
    const float y = float(point.y());
    const float x1 = b < x ? x : b;
    const float y1 = b < y ? y : b;
    const float width = float(view->geometry().width());
    const float height = float(view->geometry().height());
    const float x2 = (width - b) > x1 ? x1 : (width - b);
    const float y2 = (height - b) > y1 ? y1 : (height - b);
    return QPointF(double(x2), double(y2));
}
