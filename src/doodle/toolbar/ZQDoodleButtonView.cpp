#include "ZQDoodleButtonView.h"

#include "DoodleBitmap_p.h"
#include "ZQDoodleButton.h"
#include "ZQDoodleButtonView_p.h"

#include <doodle/support/DoodleBundle_p.h>

#include <algorithm>

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
        // A full point of white around the dot: a dark brush still shows on the dark pill.
        return {10.0 + 2 * index, brushColor, selected ? red : QColor(Qt::white), 1.0};
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

// Every choice takes taps in a cell at least this many points on each side.
constexpr double kLeastTarget = 32.0;
// The selected choice's ring, outside its dot: white shows on the dark pill
// and, with the gap between, around a dot of any colour. A text size's own
// white border already shows on the pill; it needs none.
QColor markFor(qint64 type)
{
    return type == ZQDoodleButtonViewTypeTextSize ? QColor() : QColor(Qt::white);
}

// Columns and rows of `count` cells `pitch` wide within `width` points.
QSize gridFor(qsizetype count, double pitch, double width)
{
    const int fit = std::max(1, int(width / pitch));
    const int rows = int((count + fit - 1) / fit);
    return QSize(int((count + rows - 1) / std::max(rows, 1)), rows);
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
    d->background = background;
    background->setFrame(QRectF(rect()));
    background->setText(QStringLiteral(""));
    background->setFocusPolicy(Qt::NoFocus);
    background->show();
    if (!isPickerType(d->type))
        return;
    loadTable();
    d->buttonArray.clear();
    setCornerRadius(std::min<double>(height(), kLeastTarget) * 0.5);
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
    const ChoiceStyle style = choiceStyle(d->type, index, index == d->selectIndex,
                                          colorWithHexString(colourText), d->brushColor);
    const double side = style.side;
    d->buttonSize = QSizeF(side, side);
    d->buttonSpacing = d->type == ZQDoodleButtonViewTypeColour ? 8 : 5;
    button->setBackgroundColor(style.fill);
    button->setTileSize(QSizeF(side, side));
    button->setMarkColor(index == d->selectIndex ? markFor(d->type) : QColor());
    button->setCornerRadius(side * 0.5);
    button->setBorderColor(style.border);
    button->setBorderWidth(style.borderWidth);
    button->setClipsToBounds(d->type != ZQDoodleButtonViewTypeTextSize);
    button->setFrame(QRectF(0, 0, cellPitch(), kLeastTarget));
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
        for (ZQDoodleButton *child : children) {
            child->setBorderColor(text ? QColor(Qt::transparent) : QColor(Qt::white));
            child->setMarkColor(QColor());
            child->setSelected(false);
        }
        button->setBorderColor(text ? QColor(Qt::white) : QColor::fromRgbF(1, 0, 0, 1));
        button->setMarkColor(markFor(d->type));
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
    setCornerRadius(std::min<double>(height(), kLeastTarget) * 0.5);
    const qsizetype count = d->buttonArray.size();
    if (!isPickerType(d->type) || count == 0)
        return;
    // A grid of cells centred in the picker, as many rows as its height holds;
    // each choice is drawn at its own size in the middle of its cell.
    const int rows = int(std::clamp<qsizetype>(qsizetype(height() / kLeastTarget), 1, count));
    const QSize grid(int((count + rows - 1) / rows), rows);
    // A picker narrower than fittingSize() asks for takes smaller steps, down
    // to the designed pitch, before its choices run out of it.
    const double designed = d->buttonSize.width() + double(d->buttonSpacing);
    const double pitch = std::max(designed, std::min(cellPitch(), width() / double(grid.width())));
    const QPointF origin((width() - grid.width() * pitch) * 0.5,
                         (height() - grid.height() * kLeastTarget) * 0.5);
    for (int index = 0; index < count; ++index) {
        const QPointF cell(pitch * (index % grid.width()), kLeastTarget * (index / grid.width()));
        d->buttonArray.at(index)->setFrame(QRectF(origin + cell, QSizeF(pitch, kLeastTarget)));
    }
}

double ZQDoodleButtonView::cellPitch() const
{
    // The designed pitch (the largest choice and the spacing), widened to a
    // target a finger hits.
    return std::max(d->buttonSize.width() + double(d->buttonSpacing), kLeastTarget);
}

QSize ZQDoodleButtonView::fittingSize(int available) const
{
    const qsizetype count = d->buttonArray.size();
    const double pitch = cellPitch();
    const double oneRow = double(count) * pitch;
    if (std::max<double>(width(), oneRow) <= available || count == 0)
        return QSize(qCeil(std::max<double>(width(), oneRow)), qCeil(kLeastTarget));
    const QSize grid = gridFor(count, pitch, available);
    return QSize(qCeil(grid.width() * pitch), qCeil(grid.height() * kLeastTarget));
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
