#include "ZQColourToolbar.h"

#include "ZQColourToolbar_p.h"
#include "ZQDoodleButton.h"
#include "ZQDoodleButtonView.h"

#include <doodle/support/DoodleBundle_p.h>

ZQColourToolbar::ZQColourToolbar(const QRect &frame, QWidget *parent)
    : ZQDoodleRoundedView(parent), d(std::make_unique<ZQColourToolbarPrivate>())
{
    setGeometry(frame);
    initView();
}

ZQColourToolbar::~ZQColourToolbar() = default;

QStringList ZQColourToolbar::brushColorsArray() const
{
    return d->brushColorsArray;
}

QColor ZQColourToolbar::currentColor() const
{
    return d->brushColor;
}

QList<ZQDoodleButton *> ZQColourToolbar::buttons() const
{
    return d->buttonArray;
}

ZQDoodleButton *ZQColourToolbar::curBrushButton() const
{
    return d->curBrushButton;
}

QSizeF ZQColourToolbar::buttonSize() const
{
    return d->buttonSize;
}

void ZQColourToolbar::setButtonSize(const QSizeF &size)
{
    d->buttonSize = size;
}

qint64 ZQColourToolbar::buttonSpacing() const
{
    return d->buttonSpacing;
}

void ZQColourToolbar::setButtonSpacing(qint64 spacing)
{
    d->buttonSpacing = spacing;
}

ColourToolbarDelegate *ZQColourToolbar::delegate() const
{
    return d->delegate.get();
}

void ZQColourToolbar::setDelegate(ColourToolbarDelegate *delegate)
{
    d->delegate = delegate;
}

void ZQColourToolbar::initView()
{
    d->brushColorsArray = DoodleBundle::stringTable(QStringLiteral("brushColors"));
    d->brushColor = colorWithHexString(d->brushColorsArray.value(0));
    d->buttonArray.clear();
    d->buttonSize = QSizeF(28, 28);
    d->buttonSpacing = 28;
    const QImage swatch = DoodleBundle::image(QStringLiteral("white@2x"), QStringLiteral("png"));
    const QImage selected =
        DoodleBundle::image(QStringLiteral("white_selected@2x"), QStringLiteral("png"));
    for (const QString &entry : std::as_const(d->brushColorsArray)) {
        const QColor colour = colorWithHexString(entry);
        auto *button = new ZQDoodleButton(this);
        button->setNormalImage(imageWithColor(colour, swatch));
        button->setSelectedImage(imageWithColor(colour, selected));
        button->setAccessibleName(tr("Colour %1").arg(entry.trimmed()));
        connect(button, &ZQDoodleButton::clicked, this,
                [this, button] { chooseColorAction(button); });
        if (d->buttonArray.isEmpty()) {
            button->setSelected(true);
            d->curBrushButton = button;
        }
        button->show();
        d->buttonArray.append(button);
    }
}

void ZQColourToolbar::chooseColorAction(ZQDoodleButton *button)
{
    if (button == d->curBrushButton)
        return;
    if (d->curBrushButton)
        d->curBrushButton->setSelected(false);
    button->setSelected(true);
    d->curBrushButton = button;
    d->brushColor = colorWithHexString(d->brushColorsArray.value(d->buttonArray.indexOf(button)));
    hide();
    if (ColourToolbarDelegate *delegate = d->delegate.get())
        delegate->colourToolbar(this, d->brushColor);
}

void ZQColourToolbar::layoutSubviews()
{
    const auto count = double(d->brushColorsArray.size());
    const QSizeF size = d->buttonSize;
    const double spacing = double(d->buttonSpacing);
    const double left = (width() - (size.width() * count + (count - 1) * spacing)) * 0.5;
    for (int index = 0; index < d->buttonArray.size(); ++index) {
        const double x = left + (size.width() + spacing) * index;
        d->buttonArray.at(index)->setFrame(
            QRectF(QPointF(x, (height() - size.height()) * 0.5), size));
    }
}

QColor ZQColourToolbar::colorWithHexString(const QString &text)
{
    return ZQDoodleButtonView::colorWithHexString(text);
}

QImage ZQColourToolbar::imageWithColor(const QColor &color, const QImage &image)
{
    return ZQDoodleButtonView::imageWithColor(color, image);
}

void ZQColourToolbar::resizeEvent(QResizeEvent *event)
{
    ZQDoodleRoundedView::resizeEvent(event);
    layoutSubviews();
}
