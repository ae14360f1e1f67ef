#include "ZQDoodleButton.h"

#include "DoodlePointer_p.h"
#include "ZQDoodleButton_p.h"

#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

QRect pixelGeometry(const QRectF &frame)
{
    return QRect(qRound(frame.x()), qRound(frame.y()), qRound(frame.width()),
                 qRound(frame.height()));
}

} // namespace

ZQDoodleButton::ZQDoodleButton(QWidget *parent)
    : QAbstractButton(parent), d(std::make_unique<ZQDoodleButtonPrivate>())
{
    // Touches and taps must not take the keyboard from the board's text field.
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_AcceptTouchEvents);
}

ZQDoodleButton::~ZQDoodleButton() = default;

qint64 ZQDoodleButton::type() const
{
    return d->type;
}

void ZQDoodleButton::setType(qint64 type)
{
    d->type = type;
}

bool ZQDoodleButton::isSelected() const
{
    return d->selected;
}

void ZQDoodleButton::setSelected(bool selected)
{
    d->selected = selected;
    if (isCheckable())
        setChecked(selected);
    update();
}

QImage ZQDoodleButton::normalImage() const
{
    return d->normalImage;
}

void ZQDoodleButton::setNormalImage(const QImage &image)
{
    d->normalImage = image;
    update();
}

QImage ZQDoodleButton::selectedImage() const
{
    return d->selectedImage;
}

void ZQDoodleButton::setSelectedImage(const QImage &image)
{
    d->selectedImage = image;
    update();
}

QImage ZQDoodleButton::currentImage() const
{
    return d->currentImage();
}

QRectF ZQDoodleButton::frame() const
{
    // Someone who moved the widget directly has the frame the widget has.
    return pixelGeometry(d->frame) == geometry() ? d->frame : QRectF(geometry());
}

void ZQDoodleButton::setFrame(const QRectF &frame)
{
    d->frame = frame;
    setGeometry(pixelGeometry(frame));
}

QColor ZQDoodleButton::backgroundColor() const
{
    return d->backgroundColor;
}

void ZQDoodleButton::setBackgroundColor(const QColor &color)
{
    d->backgroundColor = color;
    update();
}

double ZQDoodleButton::cornerRadius() const
{
    return d->cornerRadius;
}

void ZQDoodleButton::setCornerRadius(double radius)
{
    d->cornerRadius = radius;
    update();
}

QColor ZQDoodleButton::borderColor() const
{
    return d->borderColor;
}

void ZQDoodleButton::setBorderColor(const QColor &color)
{
    d->borderColor = color;
    update();
}

double ZQDoodleButton::borderWidth() const
{
    return d->borderWidth;
}

void ZQDoodleButton::setBorderWidth(double width)
{
    d->borderWidth = width;
    update();
}

bool ZQDoodleButton::clipsToBounds() const
{
    return d->clipsToBounds;
}

void ZQDoodleButton::setClipsToBounds(bool clips)
{
    d->clipsToBounds = clips;
    update();
}

QColor ZQDoodleButton::titleColor() const
{
    return d->titleColor;
}

void ZQDoodleButton::setTitleColor(const QColor &color)
{
    d->titleColor = color;
    update();
}

QSizeF ZQDoodleButton::tileSize() const
{
    return d->tileSize;
}

void ZQDoodleButton::setTileSize(const QSizeF &size)
{
    d->tileSize = size;
    update();
}

QRectF ZQDoodleButton::tileRect() const
{
    return d->tileRect(QRectF(rect()));
}

QColor ZQDoodleButton::markColor() const
{
    return d->markColor;
}

void ZQDoodleButton::setMarkColor(const QColor &color)
{
    d->markColor = color;
    update();
}

bool ZQDoodleButton::event(QEvent *event)
{
    return DoodlePointer::handleTap(this, event) || QAbstractButton::event(event);
}

void ZQDoodleButton::keyPressEvent(QKeyEvent *event)
{
    // Space is the button's own key; Enter presses it as well.
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        event->modifiers() == Qt::NoModifier) {
        animateClick();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void ZQDoodleButton::nextCheckState()
{
    // The selection is the owner's to set, never a tap's.
}

void ZQDoodleButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    d->paint(painter, QRectF(rect()), isEnabled(), isDown(), text(), font());
    // Only where the keyboard moved the focus: the first button a window
    // focuses by itself shows no ring to a mouse or finger user.
    if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange))
        DoodleTile::paintFocusRing(painter, QRectF(rect()), palette().color(QPalette::Highlight));
}
