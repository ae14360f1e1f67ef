#include "ZQDoodleButton.h"

#include "DoodlePointer_p.h"
#include "ZQDoodleButton_p.h"

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

bool ZQDoodleButton::event(QEvent *event)
{
    return DoodlePointer::handleTap(this, event) || QAbstractButton::event(event);
}

void ZQDoodleButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRectF bounds(rect());
    const QPainterPath shape = roundedShape(bounds, d->cornerRadius);
    if (paints(d->backgroundColor))
        painter.fillPath(shape, d->backgroundColor);
    painter.save();
    if (d->clipsToBounds)
        painter.setClipPath(shape);
    // A pressed button dims its content, as a finger on it would expect.
    if (isDown())
        painter.setOpacity(0.5);
    else if (!isEnabled())
        painter.setOpacity(0.3); // unavailable: nothing to take back or clear
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
