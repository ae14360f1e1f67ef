#include "ZQDoodleToolbar.h"

#include "DoodleBitmap_p.h"
#include "ZQDoodleButton.h"
#include "ZQDoodleToolbar_p.h"

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QPainter>

#include <algorithm>

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
    {"laser", DoodleToolbarButtonTypeLaser, 7,
     QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Laser pointer")},
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

constexpr double kRowHeight = 30.0;
constexpr double kRowGap = 4.0;
constexpr float kLeastSpacing = 2.0f;
constexpr float kWrappedSpacing = 6.0f;

bool isDivider(const ZQDoodleButton *element)
{
    return element->type() == DoodleToolbarButtonTypeDivider;
}

// The row of each element when the buttons wrap into `rows` rows of equal
// button counts (the last may hold fewer); a divider stays in the row of the
// button before it.
QList<int> wrappedRows(const QList<ZQDoodleButton *> &elements, int rows)
{
    const auto buttons = std::count_if(elements.begin(), elements.end(),
                                       [](const ZQDoodleButton *e) { return !isDivider(e); });
    const qsizetype perRow = (buttons + rows - 1) / std::max(rows, 1);
    QList<int> rowOf;
    int row = 0;
    qsizetype inRow = 0;
    for (const ZQDoodleButton *element : elements) {
        if (!isDivider(element) && inRow == perRow) {
            ++row;
            inRow = 0;
        }
        inRow += isDivider(element) ? 0 : 1;
        rowOf << row;
    }
    return rowOf;
}

// The width of 30-point buttons and 1-point dividers, without spacing, and
// their number, of the widest row.
std::pair<double, int> widestRow(const QList<ZQDoodleButton *> &elements, const QList<int> &rowOf)
{
    std::pair<double, int> widest{0.0, 0};
    for (int row = 0; row <= (rowOf.isEmpty() ? -1 : rowOf.constLast()); ++row) {
        std::pair<double, int> current{0.0, 0};
        for (qsizetype i = 0; i < elements.size(); ++i) {
            if (rowOf.at(i) != row)
                continue;
            current.first += isDivider(elements.at(i)) ? 1.0 : kRowHeight;
            ++current.second;
        }
        if (current.first + current.second > widest.first + widest.second)
            widest = current;
    }
    return widest;
}

// The spacing of the one row of the bar's designed layout.
float rowSpacing(double width, qsizetype count)
{
    const float buttonsWidth = float(count - 2) * -30.0f;
    return float((width + double(buttonsWidth) - 2.0) / double(count));
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

void ZQDoodleToolbar::layoutSubviews()
{
    initDefaultButton();
    const int count = int(d->buttonArray.size());
    const QSizeF bar(size());
    // Eleven buttons of 30 points and two dividers of 1: fixed numbers that do
    // not follow buttonSize().
    d->buttonSpacing = rowSpacing(bar.width(), count);
    const int rows = int((bar.height() + kRowGap) / (kRowHeight + kRowGap));
    if (d->horizontal && rows > 1 && d->buttonSpacing < kLeastSpacing) {
        layoutRows(rows);
        return;
    }
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

void ZQDoodleToolbar::layoutRows(int rows)
{
    const QList<int> rowOf = wrappedRows(d->buttonArray, rows);
    const auto [filled, elements] = widestRow(d->buttonArray, rowOf);
    d->buttonSpacing = float((width() - filled) / std::max(elements, 1));
    const QSizeF row(width(), kRowHeight);
    int index = 0, dividers = 0;
    for (qsizetype i = 0; i < d->buttonArray.size(); ++i) {
        if (i > 0 && rowOf.at(i) != rowOf.at(i - 1))
            index = dividers = 0;
        ZQDoodleButton *element = d->buttonArray.at(i);
        const QRectF frame =
            rowFrame(isDivider(element), index++, dividers, d->buttonSpacing, d->buttonSize, row);
        dividers += isDivider(element) ? 1 : 0;
        element->setFrame(frame.translated(0, rowOf.at(i) * (kRowHeight + kRowGap)));
    }
}

QSizeF ZQDoodleToolbar::sizeThatFits(double available) const
{
    if (rowSpacing(available, d->buttonArray.size()) >= kLeastSpacing)
        return QSizeF(available, kRowHeight);
    const auto [filled, elements] = widestRow(d->buttonArray, wrappedRows(d->buttonArray, 2));
    return QSizeF(filled + double(kWrappedSpacing) * elements, 2 * kRowHeight + kRowGap);
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
