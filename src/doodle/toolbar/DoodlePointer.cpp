#include "DoodlePointer_p.h"

#include <QAbstractButton>
#include <QMouseEvent>
#include <QTabletEvent>
#include <QTouchEvent>

namespace {

std::optional<DoodlePointer::Phase> phaseOf(QEvent::Type type)
{
    using Phase = DoodlePointer::Phase;
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
        return Phase::Press;
    case QEvent::MouseMove:
    case QEvent::TouchUpdate:
    case QEvent::TabletMove:
        return Phase::Move;
    case QEvent::MouseButtonRelease:
    case QEvent::TouchEnd:
    case QEvent::TabletRelease:
        return Phase::Release;
    case QEvent::TouchCancel:
        return Phase::Cancel;
    default:
        return std::nullopt;
    }
}

bool isTouchOrStylus(QEvent::Type type)
{
    switch (type) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
        return true;
    default:
        return false;
    }
}

} // namespace

std::optional<DoodlePointer> DoodlePointer::read(const QEvent *event)
{
    const std::optional<Phase> phase = phaseOf(event->type());
    if (!phase)
        return std::nullopt;
    if (event->isSinglePointEvent()) {
        const auto *single = static_cast<const QSinglePointEvent *>(event);
        // Only the left mouse button draws a tap; other buttons are not the pointer.
        if (event->type() != QEvent::MouseMove && event->type() != QEvent::TabletMove &&
            single->button() != Qt::LeftButton)
            return std::nullopt;
        return DoodlePointer{*phase, single->position()};
    }
    const auto *touch = static_cast<const QTouchEvent *>(event);
    const QPointF position =
        touch->points().isEmpty() ? QPointF() : touch->points().constFirst().position();
    return DoodlePointer{*phase, position};
}

bool DoodlePointer::handleTap(QAbstractButton *button, QEvent *event)
{
    if (!isTouchOrStylus(event->type()))
        return false;
    event->accept();
    const std::optional<DoodlePointer> pointer = read(event);
    if (!pointer)
        return true;
    const bool inside = button->rect().contains(pointer->position.toPoint());
    switch (pointer->phase) {
    case Phase::Press:
        button->setDown(inside);
        break;
    case Phase::Move:
        // A stylus moves over the button without touching it too.
        if (event->type() != QEvent::TabletMove ||
            static_cast<const QTabletEvent *>(event)->buttons() != Qt::NoButton)
            button->setDown(inside);
        break;
    case Phase::Release:
        if (button->isDown()) {
            button->setDown(false);
            button->click();
        }
        break;
    case Phase::Cancel:
        button->setDown(false);
        break;
    }
    return true;
}
