#include "ZQDoodleButtonView.h"

#include "DoodleBitmap_p.h"
#include "ZQDoodleButton.h"
#include "ZQDoodleButtonView_p.h"

#include <doodle/support/DoodleBundle_p.h>

namespace {

// The look of one choice: a square of `side` points with round ends.
struct ChoiceStyle
{
    double side;
    QColor fill;
    QColor border;
    double borderWidth;
};

const QColor kLightGrey = QColor::fromRgbF(2 / 3.0f, 2 / 3.0f, 2 / 3.0f);

ChoiceStyle choiceStyle(qint64 type, int index, bool selected, const QColor &entryColour,
                        const QColor &brushColor)
{
    const QColor red = QColor::fromRgbF(1, 0, 0, 1);
    switch (type) {
    case ZQDoodleButtonViewTypeColour:
        return {14, entryColour, selected ? red : QColor(Qt::white), 1.0};
    case ZQDoodleButtonViewTypeBrushWidth:
        return {10.0 + 2 * index, brushColor, selected ? red : QColor(Qt::white), 0.5};
    case ZQDoodleButtonViewTypeEraserWidth:
        return {10.0 + 2 * index, Qt::white, selected ? red : kLightGrey, 1.0};
    default: // text size
        return {12.0 + 2 * index, QColor(), selected ? QColor(Qt::white) : QColor(Qt::transparent),
                1.0};
    }
}

bool isPickerType(qint64 type)
{
    return type >= ZQDoodleButtonViewTypeColour && type <= ZQDoodleButtonViewTypeTextSize;
}

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
    background->setFrame(QRectF(rect()));
    background->setText(QStringLiteral(""));
    background->setFocusPolicy(Qt::NoFocus);
    background->show();
    if (!isPickerType(d->type))
        return;
    loadTable();
    d->buttonArray.clear();
    setCornerRadius(height() * 0.5);
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
    styleChoice(button, index);
    connect(button, &ZQDoodleButton::clicked, this, [this, button] { chooseAction(button); });
    button->show();
    return button;
}

void ZQDoodleButtonView::styleChoice(ZQDoodleButton *button, int index)
{
    const QString colourText = d->brushColorsArray.value(index);
    const ChoiceStyle style = choiceStyle(d->type, index, index == d->selectIndex,
                                          colorWithHexString(colourText), d->brushColor);
    const double side = style.side;
    d->buttonSize = QSizeF(side, side);
    d->buttonSpacing = d->type == ZQDoodleButtonViewTypeColour ? 8 : 5;
    button->setBackgroundColor(style.fill);
    button->setCornerRadius(side * 0.5);
    button->setBorderColor(style.border);
    button->setBorderWidth(style.borderWidth);
    button->setClipsToBounds(d->type != ZQDoodleButtonViewTypeTextSize);
    // The colour swatches get their frame from the layout.
    if (d->type != ZQDoodleButtonViewTypeColour)
        button->setFrame(QRectF(0, 0, side, side));
    switch (d->type) {
    case ZQDoodleButtonViewTypeColour:
        button->setAccessibleName(tr("Colour %1").arg(colourText.trimmed()));
        break;
    case ZQDoodleButtonViewTypeTextSize: {
        QFont font = button->font();
        font.setPixelSize(qMax(1, qRound(side - 2)));
        button->setFont(font);
        button->setText(QStringLiteral("T"));
        button->setTitleColor(Qt::white);
        button->setAccessibleName(tr("Text size %1").arg(d->textSizeArray.value(index)));
        break;
    }
    default:
        button->setAccessibleName(tr("Width %1")
                                      .arg(d->type == ZQDoodleButtonViewTypeBrushWidth
                                               ? d->brushWidthArray.value(index)
                                               : d->eraserWidthArray.value(index)));
        break;
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
        for (ZQDoodleButton *child : children)
            child->setBorderColor(text ? QColor(Qt::transparent) : QColor(Qt::white));
        button->setBorderColor(text ? QColor(Qt::white) : QColor::fromRgbF(1, 0, 0, 1));
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
    const qsizetype count = d->buttonArray.size();
    if (!isPickerType(d->type) || count == 0)
        return;
    const double spacing = double((count - 1) * d->buttonSpacing);
    if (d->type == ZQDoodleButtonViewTypeColour) {
        const QSizeF size = d->buttonSize;
        const double left = (width() - (size.width() * double(count) + spacing)) * 0.5;
        for (int index = 0; index < count; ++index) {
            const double x = left + (size.width() + double(d->buttonSpacing)) * index;
            d->buttonArray.at(index)->setFrame(
                QRectF(QPointF(x, (height() - size.height()) * 0.5), size));
        }
        return;
    }
    // Every choice sits on the pitch of the last, largest one.
    const double largest = d->buttonArray.constLast()->frame().width();
    const double left = (width() - (largest * double(count) + spacing)) * 0.5;
    for (int index = 0; index < count; ++index) {
        ZQDoodleButton *button = d->buttonArray.at(index);
        const QSizeF size = button->frame().size();
        const double x = left + (largest + double(d->buttonSpacing)) * index;
        button->setFrame(QRectF(QPointF(x, (height() - size.height()) * 0.5), size));
    }
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
    QString digits = text.trimmed().toUpper();
    if (digits.size() < 6)
        return Qt::transparent;
    if (digits.startsWith(QLatin1String("0X")))
        digits.remove(0, 2);
    if (digits.startsWith(QLatin1Char('#')))
        digits.remove(0, 1);
    if (digits.size() != 6)
        return Qt::transparent;
    // A pair that is not hexadecimal reads as 0.
    const auto component = [&digits](int pair) {
        return float(digits.mid(pair * 2, 2).toUInt(nullptr, 16)) / 255.0f;
    };
    return QColor::fromRgbF(component(0), component(1), component(2), 1.0f);
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
