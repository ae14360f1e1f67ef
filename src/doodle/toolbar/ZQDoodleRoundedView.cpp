#include "ZQDoodleRoundedView.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

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
    if (!m_backgroundColor.isValid() || m_backgroundColor.alpha() == 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    // A radius beyond half the shorter side makes the ends semicircles.
    const double limit = std::min(width(), height()) * 0.5;
    const double radius = std::clamp(m_cornerRadius, 0.0, limit);
    shape.addRoundedRect(QRectF(rect()), radius, radius);
    painter.fillPath(shape, m_backgroundColor);
}
