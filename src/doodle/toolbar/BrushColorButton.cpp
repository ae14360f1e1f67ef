#include "BrushColorButton.h"

#include "DoodlePointer_p.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

BrushColorButton::BrushColorButton(QWidget *parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_AcceptTouchEvents);
    configInit();
}

void BrushColorButton::configInit()
{
    // A new control has not been laid out: Qt's provisional size is no bounds yet.
    m_preBounds = testAttribute(Qt::WA_Resized) ? QRectF(rect()) : QRectF();
}

void BrushColorButton::setSelected(bool selected)
{
    m_selected = selected;
    m_borderWidth = selected ? 2.0 : 0.0;
    update();
}

void BrushColorButton::setTintColor(const QColor &color)
{
    m_tintColor = color;
    update();
}

void BrushColorButton::layoutSubviews()
{
    const QRectF bounds(rect());
    if (bounds == m_preBounds)
        return;
    const double radius = std::min(bounds.width(), bounds.height()) * 0.5;
    m_disc = QRectF(0, 0, 2 * radius, 2 * radius);
    m_disc.moveCenter(bounds.center());
    m_preBounds = bounds;
    update();
}

bool BrushColorButton::event(QEvent *event)
{
    return DoodlePointer::handleTap(this, event) || QAbstractButton::event(event);
}

void BrushColorButton::resizeEvent(QResizeEvent *event)
{
    QAbstractButton::resizeEvent(event);
    layoutSubviews();
}

void BrushColorButton::paintEvent(QPaintEvent *)
{
    if (m_disc.isEmpty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath disc;
    disc.addEllipse(m_disc);
    if (m_tintColor.isValid())
        painter.fillPath(disc, m_tintColor);
    if (m_borderWidth <= 0.0)
        return;
    // The ring lies inside the disc.
    const double half = m_borderWidth * 0.5;
    painter.setPen(QPen(Qt::white, m_borderWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(m_disc.adjusted(half, half, -half, -half));
}
