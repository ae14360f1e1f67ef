#include "ZQDoodleToolbar.h"

#include "DoodleBitmap_p.h"
#include "ZQDoodleButton.h"
#include "ZQDoodleToolbar_p.h"

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QPainter>

namespace {

// One element of the bar, in display order. `selectedMode` is the action mode
// that marks the button selected; 0 for buttons without a selected image.
struct ToolbarEntry
{
    const char *name;
    qint64 type;
    qint32 selectedMode;
    const char *title;
};

const ToolbarEntry kToolbarTable[] = {
    {"revoke", DoodleToolbarButtonTypeUndo, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Undo")},
    {"clear", DoodleToolbarButtonTypeClear, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Clear")},
    {"line", DoodleToolbarButtonTypeDivider, 0, nullptr},
    {"color", DoodleToolbarButtonTypeColour, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Colour")},
    {"width", DoodleToolbarButtonTypeWidth, 1, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Pen")},
    {"eraser", DoodleToolbarButtonTypeEraser, 2, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Eraser")},
    {"oval", DoodleToolbarButtonTypeOval, 4, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Ellipse")},
    {"rect", DoodleToolbarButtonTypeRect, 3, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Rectangle")},
    {"arrow", DoodleToolbarButtonTypeArrow, 5, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Arrow")},
    {"text", DoodleToolbarButtonTypeText, 6, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Text")},
    {"line", DoodleToolbarButtonTypeDivider, 0, nullptr},
    {"save", DoodleToolbarButtonTypeSave, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Save")},
    {"close", DoodleToolbarButtonTypeClose, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Close")},
};

QImage toolbarImage(const QString &name)
{
    return DoodleBundle::image(name, QStringLiteral("png"));
}

// The frame of element `index` of a row, `dividers` dividers having been placed before it.
QRectF rowFrame(bool divider, int index, int dividers, float spacing, const QSizeF &button,
                const QSizeF &bar)
{
    const double x = (button.width() + double(spacing)) * (index - dividers) +
                     double(spacing * 0.5f) + double((spacing + 1.0f) * float(dividers));
    if (divider)
        return QRectF(x, bar.height() * 0.25, 1, bar.height() * 0.5);
    return QRectF(x, (bar.height() - button.height()) * 0.5, button.width(), button.height());
}

// The frame of element `index` of a column; for a divider `dividers` already counts it.
QRectF columnFrame(bool divider, int index, int dividers, float spacing, const QSizeF &button,
                   const QSizeF &bar)
{
    const double s = double(spacing), bh = button.height();
    if (divider) {
        const double y = (bh + s) * (index - (dividers - 1)) + s + (30 - bh) * 0.5 + dividers;
        // One point wide and half the bar's width high, as in a row.
        return QRectF(bar.width() * 0.25, y, 1, bar.width() * 0.5);
    }
    const double y = (bh + s) * (index - dividers) + s + (30 - bh) * 0.5 + (dividers - 1);
    return QRectF((bar.width() - button.width()) * 0.5, y, button.width(), bh);
}

} // namespace

ZQDoodleToolbar::ZQDoodleToolbar(bool isHost, QWidget *parent)
    : ZQDoodleRoundedView(parent), d(std::make_unique<ZQDoodleToolbarPrivate>())
{
    d->isHost = isHost;
    initDefaultButton();
}

ZQDoodleToolbar::~ZQDoodleToolbar() = default;

QList<ZQDoodleButton *> ZQDoodleToolbar::buttons() const
{
    return d->buttonArray;
}

QSizeF ZQDoodleToolbar::buttonSize() const
{
    return d->buttonSize;
}

void ZQDoodleToolbar::setButtonSize(const QSizeF &size)
{
    d->buttonSize = size;
}

float ZQDoodleToolbar::buttonSpacing() const
{
    return d->buttonSpacing;
}

void ZQDoodleToolbar::setButtonSpacing(float spacing)
{
    d->buttonSpacing = spacing;
}

bool ZQDoodleToolbar::horizontal() const
{
    return d->horizontal;
}

void ZQDoodleToolbar::setHorizontal(bool horizontal)
{
    d->horizontal = horizontal;
}

bool ZQDoodleToolbar::isHost() const
{
    return d->isHost;
}

void ZQDoodleToolbar::setIsHost(bool isHost)
{
    d->isHost = isHost;
}

qint32 ZQDoodleToolbar::actionMode() const
{
    return d->actionMode;
}

void ZQDoodleToolbar::setActionMode(qint32 mode)
{
    d->actionMode = mode;
}

QColor ZQDoodleToolbar::brushColor() const
{
    return d->brushColor;
}

void ZQDoodleToolbar::setBrushColor(const QColor &color)
{
    d->brushColor = color;
}

DoodleToolbarDelegate *ZQDoodleToolbar::delegate() const
{
    return d->delegate.get();
}

void ZQDoodleToolbar::setDelegate(DoodleToolbarDelegate *delegate)
{
    d->delegate = delegate;
}

void ZQDoodleToolbar::setButtonEnabled(qint64 type, bool enabled)
{
    if (enabled)
        d->disabledTypes.remove(type);
    else
        d->disabledTypes.insert(type);
    for (ZQDoodleButton *button : std::as_const(d->buttonArray)) {
        if (button->type() == type)
            button->setEnabled(enabled);
    }
}

bool ZQDoodleToolbar::isButtonEnabled(qint64 type) const
{
    return !d->disabledTypes.contains(type);
}

void ZQDoodleToolbar::initDefaultButton()
{
    // A tap may lead here (the controller lays the bar out again), so the old
    // buttons leave the bar at once and are deleted once their events are done.
    for (ZQDoodleButton *button : std::as_const(d->buttonArray)) {
        button->setParent(nullptr);
        button->deleteLater();
    }
    d->buttonArray.clear();
    for (const ToolbarEntry &entry : kToolbarTable) {
        if (entry.type == DoodleToolbarButtonTypeDivider) {
            addDivideLine();
            continue;
        }
        ZQDoodleButton *button = addButton();
        const QString name = QLatin1String(entry.name);
        button->setType(entry.type);
        button->setToolTip(tr(entry.title));
        button->setAccessibleName(tr(entry.title));
        button->setEnabled(!d->disabledTypes.contains(entry.type));
        QImage normal = toolbarImage(name);
        if (entry.type == DoodleToolbarButtonTypeColour) {
            normal = imageWithBackgroundColor(d->brushColor, normal);
        } else if (entry.selectedMode != 0) {
            button->setSelectedImage(toolbarImage(name + QStringLiteral("_select")));
            button->setSelected(d->actionMode == entry.selectedMode);
        }
        button->setNormalImage(normal);
    }
}

ZQDoodleButton *ZQDoodleToolbar::addButton()
{
    auto *button = new ZQDoodleButton(this);
    connect(button, &ZQDoodleButton::clicked, this, [this, button] { buttonAction(button); });
    button->show();
    d->buttonArray.append(button);
    return button;
}

ZQDoodleButton *ZQDoodleToolbar::addDivideLine()
{
    auto *divider = new ZQDoodleButton(this);
    divider->setBackgroundColor(QColor::fromRgbF(2 / 3.0f, 2 / 3.0f, 2 / 3.0f));
    divider->setText(QStringLiteral(""));
    divider->setType(DoodleToolbarButtonTypeDivider);
    divider->setFocusPolicy(Qt::NoFocus);
    divider->show();
    d->buttonArray.append(divider);
    return divider;
}

void ZQDoodleToolbar::buttonAction(ZQDoodleButton *button)
{
    if (DoodleToolbarDelegate *delegate = d->delegate.get())
        delegate->doodleToolbar(this, button, button->type());
}

void ZQDoodleToolbar::setColourButton(const QColor &colour)
{
    const QImage normal = imageWithBackgroundColor(colour, toolbarImage(QStringLiteral("color")));
    const QImage selected =
        imageWithBackgroundColor(colour, toolbarImage(QStringLiteral("color_select")));
    for (ZQDoodleButton *button : std::as_const(d->buttonArray)) {
        if (button->type() != DoodleToolbarButtonTypeColour)
            continue;
        button->setNormalImage(normal);
        button->setSelectedImage(selected);
    }
}

void ZQDoodleToolbar::layoutSubviews()
{
    initDefaultButton();
    const int count = int(d->buttonArray.size());
    const QSizeF bar(size());
    // Eleven buttons of 30 points and two dividers of 1: fixed numbers that do
    // not follow buttonSize().
    const float buttonsWidth = float(count - 2) * -30.0f;
    d->buttonSpacing = float((bar.width() + double(buttonsWidth) - 2.0) / count);
    int dividers = 0;
    for (int index = 0; index < count; ++index) {
        ZQDoodleButton *button = d->buttonArray.at(index);
        const bool divider = button->type() == DoodleToolbarButtonTypeDivider;
        if (d->horizontal) {
            button->setFrame(
                rowFrame(divider, index, dividers, d->buttonSpacing, d->buttonSize, bar));
            dividers += divider ? 1 : 0;
        } else {
            dividers += divider ? 1 : 0;
            button->setFrame(
                columnFrame(divider, index, dividers, d->buttonSpacing, d->buttonSize, bar));
        }
    }
}

QImage ZQDoodleToolbar::coloredImage(const QColor &color, const QSizeF &size)
{
    QImage image = DoodleBitmap::create(size, DoodleScreen::scale());
    const QRectF disc(8, 8, size.width() - 22, size.height() - 22);
    if (image.isNull() || !color.isValid() || disc.isEmpty())
        return image;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(disc);
    return image;
}

QImage ZQDoodleToolbar::imageWithBackgroundColor(const QColor &color, const QImage &image)
{
    const QSizeF size = image.deviceIndependentSize();
    const QImage disc = coloredImage(color, size);
    QImage result = DoodleBitmap::create(size, DoodleScreen::scale());
    if (result.isNull())
        return result;
    QPainter painter(&result);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QSizeF discSize = disc.deviceIndependentSize();
    painter.drawImage(
        QPointF((size.width() - discSize.width()) * 0.5, (size.height() - discSize.height()) * 0.5),
        disc);
    painter.drawImage(QRectF(QPointF(), size), image);
    return result;
}

void ZQDoodleToolbar::resizeEvent(QResizeEvent *event)
{
    ZQDoodleRoundedView::resizeEvent(event);
    layoutSubviews();
}
