#include "ZQDoodleToolbar.h"

#include "ZQDoodleButton.h"
#include "ZQDoodleToolbar_p.h"
#include <doodle/board/DoodleBitmap_p.h>

#include <doodle/board/DoodleBarLayout_p.h>

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QPainter>

#include <algorithm>

namespace {

QImage toolbarImage(const QString &name)
{
    return DoodleBundle::image(name, QStringLiteral("png"));
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

void ZQDoodleToolbar::initDefaultButton()
{
    // A tap may lead here (the controller lays the bar out again), so the old
    // buttons leave the bar at once and are deleted once their events are done.
    // The keyboard focus moves to the new button of the same type.
    qint64 focused = -1;
    for (ZQDoodleButton *button : std::as_const(d->buttonArray)) {
        focused = button->hasFocus() ? button->type() : focused;
        button->setParent(nullptr);
        button->deleteLater();
    }
    d->buttonArray.clear();
    for (const DoodleToolEntry &entry : DoodleBarLayout::tools()) {
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
            button->setCheckable(true); // a tool: announced as checked while selected
            button->setSelected(d->actionMode == entry.selectedMode);
        }
        button->setNormalImage(normal);
        if (entry.type == focused)
            button->setFocus(Qt::TabFocusReason);
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

QList<qint64> ZQDoodleToolbar::elementTypes() const
{
    QList<qint64> types;
    for (const ZQDoodleButton *element : std::as_const(d->buttonArray))
        types << element->type();
    return types;
}

void ZQDoodleToolbar::layoutSubviews()
{
    initDefaultButton();
    const QList<QRectF> frames = DoodleBarLayout::frames(
        elementTypes(), QSizeF(size()), d->buttonSize, d->horizontal, &d->buttonSpacing);
    for (qsizetype i = 0; i < frames.size(); ++i)
        d->buttonArray.at(i)->setFrame(frames.at(i));
}

QSizeF ZQDoodleToolbar::sizeThatFits(double available) const
{
    return DoodleBarLayout::sizeThatFits(elementTypes(), available);
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

QImage ZQDoodleToolbar::coloredImage(const QColor &color, const QSizeF &size)
{
    return DoodleBarLayout::coloredImage(color, size);
}

QImage ZQDoodleToolbar::imageWithBackgroundColor(const QColor &color, const QImage &image)
{
    return DoodleBarLayout::imageWithBackgroundColor(color, image);
}

void ZQDoodleToolbar::resizeEvent(QResizeEvent *event)
{
    ZQDoodleRoundedView::resizeEvent(event);
    layoutSubviews();
}
