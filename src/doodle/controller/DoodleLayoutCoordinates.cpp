// Board controller: the core's coordinate conversions, for hosts.
#include <doodle/controller/DoodleLayout.h>

#include "DoodleLayout_p.h"

QSizeF DoodleLayout::getScaleSize() const
{
    return d->boardSize();
}

QPointF DoodleLayout::logicFromNormal(const QPointF &point) const
{
    return d->logicFromNormal(point);
}

double DoodleLayout::logicFromNormalWidth(double width) const
{
    return d->logicFromNormalWidth(width);
}

double DoodleLayout::logicFromNormalHeight(double height) const
{
    return d->logicFromNormalHeight(height);
}

double DoodleLayout::normalFromLogicWidth(double width) const
{
    return d->normalFromLogicWidth(width);
}

QPointF DoodleLayout::normalFromLogicPositionX(double x, double y) const
{
    return d->normalFromLogicPosition(x, y);
}

QRectF DoodleLayout::normalFromLogicRect(const QRectF &rect) const
{
    return d->normalFromLogicRect(rect);
}

QPointF DoodleLayout::limitTouchPoint(const QPointF &point, const QWidget *view) const
{
    return view ? d->limitTouchPoint(point, QSizeF(view->geometry().size())) : point;
}
