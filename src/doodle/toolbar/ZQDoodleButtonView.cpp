#include "ZQDoodleButtonView.h"

#include "ZQDoodleButton.h"
#include "ZQDoodleButtonView_p.h"

#include <doodle/board/DoodleBarLayout_p.h>
#include <doodle/board/DoodleBitmap_p.h>
#include <doodle/support/DoodleBundle_p.h>

#include <algorithm>

namespace {

bool isPickerType(qint64 type)
{
    return type >= ZQDoodleButtonViewTypeColour && type <= ZQDoodleButtonViewTypeTextSize;
}

constexpr double kLeastTarget = DoodleBarLayout::kLeastTarget;

} // namespace

ZQDoodleButtonView::ZQDoodleButtonView(const QRect &frame, qint64 selectIndex, qint64 type,
                                       const QColor &brushColor, QWidget *parent)
    : ZQDoodleRoundedView(parent), d(std::make_unique<ZQDoodleButtonViewPrivate>())
{
    setGeometry(frame);
    d->selectIndex = selectIndex;
    d->brushColor = brushColor;
    d->type = type;
    setBackgroundColor(QColor::fromRgbF(22 / 255.0f, 22 / 255.0f, 22 / 255.0f, 0.9f));
    initView();
}

ZQDoodleButtonView::ZQDoodleButtonView(const QRect &frame, QWidget *parent)
    : ZQDoodleRoundedView(parent), d(std::make_unique<ZQDoodleButtonViewPrivate>())
{
    setGeometry(frame);
    initView();
}

ZQDoodleButtonView::~ZQDoodleButtonView() = default;

qint64 ZQDoodleButtonView::type() const
{
    return d->type;
}

qint64 ZQDoodleButtonView::selectIndex() const
{
    return d->selectIndex;
}

QColor ZQDoodleButtonView::brushColor() const
{
    return d->brushColor;
}

QStringList ZQDoodleButtonView::brushColorsArray() const
{
    return d->brushColorsArray;
}

QList<double> ZQDoodleButtonView::brushWidthArray() const
{
    return d->brushWidthArray;
}

QList<double> ZQDoodleButtonView::eraserWidthArray() const
{
    return d->eraserWidthArray;
}

QList<double> ZQDoodleButtonView::textSizeArray() const
{
    return d->textSizeArray;
}

float ZQDoodleButtonView::brushWidth() const
{
    return d->brushWidth;
}

float ZQDoodleButtonView::eraserWidth() const
{
    return d->eraserWidth;
}

float ZQDoodleButtonView::textSize() const
{
    return d->textSize;
}

QList<ZQDoodleButton *> ZQDoodleButtonView::buttons() const
{
    return d->buttonArray;
}

QSizeF ZQDoodleButtonView::buttonSize() const
{
    return d->buttonSize;
}

qint64 ZQDoodleButtonView::buttonSpacing() const
{
    return d->buttonSpacing;
}

QVariantList ZQDoodleButtonView::paramArr() const
{
    return d->paramArr;
}

void ZQDoodleButtonView::setParamArr(const QVariantList &params)
{
    d->paramArr = params;
}

ZQDoodleButtonViewDelegate *ZQDoodleButtonView::delegate() const
{
    return d->delegate.get();
}

void ZQDoodleButtonView::setDelegate(ZQDoodleButtonViewDelegate *delegate)
{
    d->delegate = delegate;
}

void ZQDoodleButtonView::initView()
{
    // A tile under the choices that takes the taps between them, so they do
    // not reach the board.
    auto *background = new ZQDoodleButton(this);
    d->background = background;
    background->setFrame(QRectF(rect()));
    background->setText(QStringLiteral(""));
    background->setFocusPolicy(Qt::NoFocus);
    background->show();
    if (!isPickerType(d->type))
        return;
    loadTable();
    d->buttonArray.clear();
    setCornerRadius(DoodleBarLayout::pickerCornerRadius(height()));
    const qsizetype count = entryCount();
    for (int index = 0; index < count; ++index)
        d->buttonArray.append(addChoice(index));
}

void ZQDoodleButtonView::loadTable()
{
    switch (d->type) {
    case ZQDoodleButtonViewTypeColour:
        d->brushColorsArray = DoodleBundle::stringTable(QStringLiteral("brushColors"));
        // A fresh colour picker starts from the table's first colour,
        // whatever colour it was given.
        d->brushColor = colorWithHexString(d->brushColorsArray.value(0));
        break;
    case ZQDoodleButtonViewTypeBrushWidth:
        d->brushWidthArray =
            DoodleBundle::numberTable(DoodleBundle::scaledTableName(QStringLiteral("brushWidths")));
        break;
    case ZQDoodleButtonViewTypeEraserWidth:
        d->eraserWidthArray = DoodleBundle::numberTable(
            DoodleBundle::scaledTableName(QStringLiteral("eraserWidths")));
        break;
    default:
        d->textSizeArray =
            DoodleBundle::numberTable(DoodleBundle::scaledTableName(QStringLiteral("textSizes")));
        break;
    }
}

qsizetype ZQDoodleButtonView::entryCount() const
{
    switch (d->type) {
    case ZQDoodleButtonViewTypeColour:
        return d->brushColorsArray.size();
    case ZQDoodleButtonViewTypeBrushWidth:
        return d->brushWidthArray.size();
    case ZQDoodleButtonViewTypeEraserWidth:
        return d->eraserWidthArray.size();
    default:
        return d->textSizeArray.size();
    }
}

ZQDoodleButton *ZQDoodleButtonView::addChoice(int index)
{
    auto *button = new ZQDoodleButton(this);
    button->setType(index);
    button->setCheckable(true); // announced as checked while selected
    button->setSelected(index == d->selectIndex);
    styleChoice(button, index);
    connect(button, &ZQDoodleButton::clicked, this, [this, button] { chooseAction(button); });
    button->show();
    return button;
}

void ZQDoodleButtonView::styleChoice(ZQDoodleButton *button, int index)
{
    const QString colourText = d->brushColorsArray.value(index);
    const DoodleChoiceStyle style = DoodleBarLayout::choiceStyle(
        d->type, index, index == d->selectIndex, colorWithHexString(colourText), d->brushColor);
    const double side = style.side;
    d->buttonSize = QSizeF(side, side);
    d->buttonSpacing = DoodleBarLayout::choiceSpacing(d->type);
    button->setBackgroundColor(style.fill);
    button->setTileSize(QSizeF(side, side));
    button->setMarkColor(index == d->selectIndex ? DoodleBarLayout::markFor(d->type) : QColor());
    button->setCornerRadius(side * 0.5);
    button->setBorderColor(style.border);
    button->setBorderWidth(style.borderWidth);
    button->setClipsToBounds(d->type != ZQDoodleButtonViewTypeTextSize);
    button->setFrame(QRectF(0, 0, cellPitch(), kLeastTarget));
    const double size =
        d->type == ZQDoodleButtonViewTypeBrushWidth    ? d->brushWidthArray.value(index)
        : d->type == ZQDoodleButtonViewTypeEraserWidth ? d->eraserWidthArray.value(index)
                                                       : d->textSizeArray.value(index);
    button->setAccessibleName(DoodleBarLayout::choiceName(d->type, colourText, size));
    if (d->type == ZQDoodleButtonViewTypeTextSize) {
        QFont font = button->font();
        font.setPixelSize(qMax(1, qRound(side - 2)));
        button->setFont(font);
        button->setText(QStringLiteral("T"));
        button->setTitleColor(Qt::white);
    }
}

void ZQDoodleButtonView::chooseAction(ZQDoodleButton *button)
{
    const qint64 index = button->type();
    if (index == d->selectIndex)
        return;
    d->selectIndex = index;
    if (isPickerType(d->type)) {
        setChosenValue(int(index));
        // Every border goes back to white (clear for text sizes), the eraser
        // dots' light grey included; the chosen one is marked.
        const bool text = d->type == ZQDoodleButtonViewTypeTextSize;
        const auto children = findChildren<ZQDoodleButton *>(Qt::FindDirectChildrenOnly);
        for (ZQDoodleButton *child : children) {
            child->setBorderColor(text ? QColor(Qt::transparent) : QColor(Qt::white));
            child->setMarkColor(QColor());
            child->setSelected(false);
        }
        button->setBorderColor(text ? QColor(Qt::white) : QColor::fromRgbF(1, 0, 0, 1));
        button->setMarkColor(DoodleBarLayout::markFor(d->type));
        button->setSelected(true);
    }
    if (ZQDoodleButtonViewDelegate *delegate = d->delegate.get())
        delegate->doodleButtonView(this, index, d->type);
}

void ZQDoodleButtonView::setChosenValue(int index)
{
    switch (d->type) {
    case ZQDoodleButtonViewTypeColour:
        d->brushColor = colorWithHexString(d->brushColorsArray.value(index));
        break;
    case ZQDoodleButtonViewTypeBrushWidth:
        d->brushWidth = float(d->brushWidthArray.value(index));
        break;
    case ZQDoodleButtonViewTypeEraserWidth:
        d->eraserWidth = float(d->eraserWidthArray.value(index));
        break;
    default:
        d->textSize = float(d->textSizeArray.value(index));
        break;
    }
}

void ZQDoodleButtonView::emptyAction() {}

void ZQDoodleButtonView::layoutSubviews()
{
    if (d->background)
        d->background->setFrame(QRectF(rect()));
    setCornerRadius(DoodleBarLayout::pickerCornerRadius(height()));
    if (!isPickerType(d->type))
        return;
    const QList<QRectF> cells = DoodleBarLayout::choiceCells(
        d->buttonArray.size(), QSizeF(size()), d->buttonSize.width(), int(d->buttonSpacing));
    for (qsizetype index = 0; index < cells.size(); ++index)
        d->buttonArray.at(index)->setFrame(cells.at(index));
}

double ZQDoodleButtonView::cellPitch() const
{
    return DoodleBarLayout::cellPitch(d->buttonSize.width(), int(d->buttonSpacing));
}

QSize ZQDoodleButtonView::fittingSize(int available) const
{
    return DoodleBarLayout::pickerFittingSize(d->buttonArray.size(), d->buttonSize.width(),
                                              int(d->buttonSpacing), width(), available);
}

double ZQDoodleButtonView::getWidth() const
{
    switch (d->type) {
    case ZQDoodleButtonViewTypeBrushWidth:
        return double(d->brushWidth);
    case ZQDoodleButtonViewTypeEraserWidth:
        return double(d->eraserWidth);
    case ZQDoodleButtonViewTypeTextSize:
        return double(d->textSize);
    default:
        return 0.0;
    }
}

QColor ZQDoodleButtonView::getColor() const
{
    return d->brushColor;
}

QColor ZQDoodleButtonView::colorWithHexString(const QString &text)
{
    return DoodleBarLayout::colorWithHexString(text);
}

QImage ZQDoodleButtonView::imageWithColor(const QColor &color, const QImage &image)
{
    return DoodleBitmap::tinted(image, color);
}

void ZQDoodleButtonView::resizeEvent(QResizeEvent *event)
{
    ZQDoodleRoundedView::resizeEvent(event);
    layoutSubviews();
}
