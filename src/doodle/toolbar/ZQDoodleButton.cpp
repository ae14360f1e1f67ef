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

bool paints(const QColor &color)
{
    return color.isValid() && color.alpha() > 0;
}

// A rounded rectangle whose radius is at most half its shorter side.
QPainterPath roundedShape(const QRectF &rect, double radius)
{
    const double limit = std::min(rect.width(), rect.height()) * 0.5;
    const double clamped = std::clamp(radius, 0.0, std::max(limit, 0.0));
    QPainterPath shape;
    shape.addRoundedRect(rect, clamped, clamped);
    return shape;
}

// `image` scaled to fit `bounds` with its aspect ratio kept, centred.
QRectF fittedRect(const QImage &image, const QRectF &bounds)
{
    QRectF target(QPointF(),
                  image.deviceIndependentSize().scaled(bounds.size(), Qt::KeepAspectRatio));
    target.moveCenter(bounds.center());
    return target;
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
    return d->selected && !d->selectedImage.isNull() ? d->selectedImage : d->normalImage;
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
    const QRectF bounds(rect());
    if (d->tileSize.isEmpty())
        return bounds;
    QRectF tile(QPointF(), d->tileSize);
    tile.moveCenter(bounds.center());
    return tile;
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
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    // Unavailable: everything at a third of its strength.
    if (!isEnabled())
        painter.setOpacity(0.3);
    paintTile(painter);
    if (paints(d->markColor)) {
        const QRectF tile = tileRect();
        const double inset = -3.0; // a 2-point gap, then a 2-point ring
        painter.setPen(QPen(d->markColor, 2.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(
            roundedShape(tile.adjusted(inset, inset, -inset, -inset), d->cornerRadius - inset));
    }
    // Only where the keyboard moved the focus: the first button a window
    // focuses by itself shows no ring to a mouse or finger user.
    if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange))
        paintFocusRing(painter);
}

void ZQDoodleButton::paintFocusRing(QPainter &painter) const
{
    // The highlight colour with a white line inside it, seen on light and dark alike.
    const QRectF bounds = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setOpacity(1.0);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2.0));
    painter.drawRoundedRect(bounds, 4, 4);
    painter.setPen(QPen(Qt::white, 1.0));
    painter.drawRoundedRect(bounds.adjusted(1.5, 1.5, -1.5, -1.5), 3, 3);
}

void ZQDoodleButton::paintTile(QPainter &painter) const
{
    const QRectF bounds = tileRect();
    const QPainterPath shape = roundedShape(bounds, d->cornerRadius);
    if (paints(d->backgroundColor))
        painter.fillPath(shape, d->backgroundColor);
    painter.save();
    if (d->clipsToBounds)
        painter.setClipPath(shape);
    // A pressed button dims its content, as a finger on it would expect.
    if (isDown())
        painter.setOpacity(0.5);
    const QImage image = currentImage();
    if (!image.isNull())
        painter.drawImage(fittedRect(image, bounds), image);
    if (!text().isEmpty()) {
        painter.setPen(d->titleColor);
        painter.drawText(bounds, Qt::AlignCenter, text());
    }
    painter.restore();
    if (d->borderWidth > 0.0 && paints(d->borderColor)) {
        const double half = d->borderWidth * 0.5;
        painter.setPen(QPen(d->borderColor, d->borderWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(
            roundedShape(bounds.adjusted(half, half, -half, -half), d->cornerRadius - half));
    }
}
