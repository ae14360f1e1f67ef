#include "ZQDoodleRoundedView.h"

#include <doodle/board/DoodleTile_p.h>

#include <QPainter>

ZQDoodleRoundedView::ZQDoodleRoundedView(QWidget *parent) : QWidget(parent) {}

void ZQDoodleRoundedView::setBackgroundColor(const QColor &color)
{
    m_backgroundColor = color;
    update();
}

void ZQDoodleRoundedView::setCornerRadius(double radius)
{
    m_cornerRadius = radius;
    update();
}

void ZQDoodleRoundedView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    DoodleTile::paintBackground(painter, QRectF(rect()), m_backgroundColor, m_cornerRadius);
}
