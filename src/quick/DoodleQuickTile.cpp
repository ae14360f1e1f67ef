#include "DoodleQuickTile_p.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>

namespace {

// As long as a pointer rests on a button before its tooltip shows.
constexpr int kToolTipDelayMs = 700;

QRectF onWholePoints(const QRectF &frame)
{
    return QRectF(qRound(frame.x()), qRound(frame.y()), qRound(frame.width()),
                  qRound(frame.height()));
}

} // namespace

DoodleQuickTile::DoodleQuickTile(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
    setAcceptHoverEvents(true);
    // Taps must not take the keyboard from the board's text input; Tab reaches it.
    setActiveFocusOnTab(true);
}

void DoodleQuickTile::setSelected(bool selected)
{
    if (m_tile.selected == selected)
        return;
    m_tile.selected = selected;
    update();
    emit selectedChanged();
}

void DoodleQuickTile::setTexts(const QString &accessibleName, const QString &toolTip)
{
    m_accessibleName = accessibleName;
    m_toolTip = toolTip;
    emit textsChanged();
}

void DoodleQuickTile::setTitle(const QString &title, const QFont &font)
{
    m_title = title;
    m_font = font;
    update();
}

void DoodleQuickTile::setFrame(const QRectF &frame)
{
    const QRectF placed = onWholePoints(frame);
    setPosition(placed.topLeft());
    setSize(placed.size());
}

void DoodleQuickTile::paint(QPainter *painter)
{
    const QRectF bounds(QPointF(), size());
    m_tile.paint(*painter, bounds, isEnabled(), m_down, m_title, m_font);
    if (m_ring && hasActiveFocus())
        DoodleTile::paintFocusRing(*painter, bounds,
                                   QGuiApplication::palette().color(QPalette::Highlight));
}

void DoodleQuickTile::click()
{
    // A tap puts the tooltip away.
    m_hover.stop();
    emit toolTipWanted(false);
    if (isEnabled() && isVisible())
        emit clicked();
}

void DoodleQuickTile::setDown(bool down)
{
    if (m_down == down)
        return;
    m_down = down;
    update();
}

void DoodleQuickTile::release(const QPointF &at)
{
    const bool inside = contains(at);
    const bool wasDown = m_down;
    setDown(false);
    if (wasDown && inside)
        click();
}

void DoodleQuickTile::mousePressEvent(QMouseEvent *event)
{
    setDown(true);
    event->accept();
}

void DoodleQuickTile::mouseReleaseEvent(QMouseEvent *event)
{
    release(event->position());
}

void DoodleQuickTile::mouseUngrabEvent()
{
    setDown(false);
}

void DoodleQuickTile::touchEvent(QTouchEvent *event)
{
    // The first touch point taps; the others are ignored.
    if (event->points().isEmpty())
        return;
    const QEventPoint &point = event->points().constFirst();
    if (event->type() == QEvent::TouchBegin)
        setDown(true);
    else if (event->type() == QEvent::TouchEnd)
        release(point.position());
    else if (event->type() == QEvent::TouchCancel)
        setDown(false);
    event->accept();
}

void DoodleQuickTile::touchUngrabEvent()
{
    setDown(false);
}

void DoodleQuickTile::hoverEnterEvent(QHoverEvent *)
{
    if (!m_toolTip.isEmpty())
        m_hover.start(kToolTipDelayMs, this);
}

void DoodleQuickTile::hoverLeaveEvent(QHoverEvent *)
{
    m_hover.stop();
    emit toolTipWanted(false);
}

void DoodleQuickTile::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_hover.timerId())
        return QQuickPaintedItem::timerEvent(event);
    m_hover.stop();
    emit toolTipWanted(true);
}

void DoodleQuickTile::keyPressEvent(QKeyEvent *event)
{
    if (event->modifiers() != Qt::NoModifier && event->modifiers() != Qt::KeypadModifier) {
        event->ignore();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        break;
    case Qt::Key_Left:
    case Qt::Key_Up:
        moveFocus(false);
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        moveFocus(true);
        break;
    default:
        // Escape and the rest go to the bar or picker the tile is on.
        event->ignore();
    }
}

void DoodleQuickTile::moveFocus(bool forward)
{
    // The nearest button beside this one that takes the focus; none past the ends.
    const QList<QQuickItem *> siblings =
        parentItem() ? parentItem()->childItems() : QList<QQuickItem *>();
    const qsizetype at = siblings.indexOf(this);
    for (qsizetype i = at + (forward ? 1 : -1); i >= 0 && i < siblings.size();
         i += forward ? 1 : -1) {
        auto *tile = qobject_cast<DoodleQuickTile *>(siblings.at(i));
        if (tile && tile->isEnabled() && tile->isVisible() && tile->activeFocusOnTab()) {
            tile->forceActiveFocus(Qt::TabFocusReason);
            return;
        }
    }
}

void DoodleQuickTile::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickPaintedItem::itemChange(change, data);
    // A disabled tile is drawn dimmed.
    if (change == ItemEnabledHasChanged)
        update();
}

void DoodleQuickTile::focusInEvent(QFocusEvent *event)
{
    QQuickPaintedItem::focusInEvent(event);
    // Only where the keyboard moved the focus: a mouse or finger user sees no ring.
    m_ring = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
}

void DoodleQuickTile::focusOutEvent(QFocusEvent *event)
{
    QQuickPaintedItem::focusOutEvent(event);
    m_ring = false;
    update();
}
