#include "DoodleBarLayout_p.h"

#include "DoodleBitmap_p.h"

#include <doodle/support/DoodleBundle_p.h>
#include <doodle/support/DoodleScreen.h>

#include <QCoreApplication>
#include <QPainter>
#include <QtMath>

#include <algorithm>

namespace {

constexpr double kRowHeight = 30.0;
constexpr double kRowGap = 4.0;
constexpr float kLeastSpacing = 2.0f;
constexpr float kWrappedSpacing = 6.0f;

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

// The row of each element when the buttons wrap into `rows` rows of equal
// button counts (the last may hold fewer); a divider stays in the row of the
// button before it.
QList<int> wrappedRows(const QList<qint64> &types, int rows)
{
    const auto buttons = std::count_if(types.begin(), types.end(),
                                       [](qint64 t) { return !DoodleBarLayout::isDivider(t); });
    const qsizetype perRow = (buttons + rows - 1) / std::max(rows, 1);
    QList<int> rowOf;
    int row = 0;
    qsizetype inRow = 0;
    for (const qint64 type : types) {
        const bool divider = DoodleBarLayout::isDivider(type);
        if (!divider && inRow == perRow) {
            ++row;
            inRow = 0;
        }
        inRow += divider ? 0 : 1;
        rowOf << row;
    }
    return rowOf;
}

// The width of 30-point buttons and 1-point dividers, without spacing, and
// their number, of the widest row.
std::pair<double, int> widestRow(const QList<qint64> &types, const QList<int> &rowOf)
{
    std::pair<double, int> widest{0.0, 0};
    for (int row = 0; row <= (rowOf.isEmpty() ? -1 : rowOf.constLast()); ++row) {
        std::pair<double, int> current{0.0, 0};
        for (qsizetype i = 0; i < types.size(); ++i) {
            if (rowOf.at(i) != row)
                continue;
            current.first += DoodleBarLayout::isDivider(types.at(i)) ? 1.0 : kRowHeight;
            ++current.second;
        }
        if (current.first + current.second > widest.first + widest.second)
            widest = current;
    }
    return widest;
}

// The spacing of the one row of the bar's designed layout: buttons of 30
// points and two dividers of 1, fixed numbers that do not follow the button size.
float rowSpacing(double width, qsizetype count)
{
    const float buttonsWidth = float(count - 2) * -30.0f;
    return float((width + double(buttonsWidth) - 2.0) / double(count));
}

QList<QRectF> wrappedFrames(const QList<qint64> &types, const QSizeF &bar, const QSizeF &button,
                            int rows, float *spacing)
{
    const QList<int> rowOf = wrappedRows(types, rows);
    const auto [filled, elements] = widestRow(types, rowOf);
    *spacing = float((bar.width() - filled) / std::max(elements, 1));
    const QSizeF row(bar.width(), kRowHeight);
    QList<QRectF> frames;
    int index = 0, dividers = 0;
    for (qsizetype i = 0; i < types.size(); ++i) {
        if (i > 0 && rowOf.at(i) != rowOf.at(i - 1))
            index = dividers = 0;
        const bool divider = DoodleBarLayout::isDivider(types.at(i));
        const QRectF frame = rowFrame(divider, index++, dividers, *spacing, button, row);
        dividers += divider ? 1 : 0;
        frames << frame.translated(0, rowOf.at(i) * (kRowHeight + kRowGap));
    }
    return frames;
}

// Columns and rows of `count` cells `pitch` wide within `width` points.
QSize gridFor(qsizetype count, double pitch, double width)
{
    const int fit = std::max(1, int(width / pitch));
    const int rows = int((count + fit - 1) / fit);
    return QSize(int((count + rows - 1) / std::max(rows, 1)), rows);
}

} // namespace

const QList<DoodleToolEntry> &DoodleBarLayout::tools()
{
    // A function-local table: built on first use, whatever the order of
    // the library's static initialisers.
    static const QList<DoodleToolEntry> table = {
        {"revoke", DoodleToolbarButtonTypeUndo, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Undo")},
        {"clear", DoodleToolbarButtonTypeClear, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Clear")},
        {"line", DoodleToolbarButtonTypeDivider, 0, nullptr},
        {"color", DoodleToolbarButtonTypeColour, 0, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Colour")},
        {"width", DoodleToolbarButtonTypeWidth, 1, QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Pen")},
        {"eraser", DoodleToolbarButtonTypeEraser, 2,
         QT_TRANSLATE_NOOP("ZQDoodleToolbar", "Eraser")},
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
    return table;
}

qint64 DoodleBarLayout::markedButtonType(qint64 mode)
{
    // Note the crosswise pair: the rectangle tool (3) marks the "rect" button
    // (6) and the ellipse tool (4) the "oval" button (5).
    for (const DoodleToolEntry &entry : tools()) {
        if (entry.selectedMode != 0 && entry.selectedMode == mode)
            return entry.type;
    }
    return 0;
}

QList<QRectF> DoodleBarLayout::frames(const QList<qint64> &types, const QSizeF &bar,
                                      const QSizeF &button, bool horizontal, float *spacing)
{
    float ignored = 0.0f;
    float &s = spacing ? *spacing : ignored;
    s = rowSpacing(bar.width(), types.size());
    const int rows = int((bar.height() + kRowGap) / (kRowHeight + kRowGap));
    if (horizontal && rows > 1 && s < kLeastSpacing)
        return wrappedFrames(types, bar, button, rows, &s);
    QList<QRectF> frames;
    int dividers = 0;
    for (int index = 0; index < int(types.size()); ++index) {
        const bool divider = isDivider(types.at(index));
        if (horizontal) {
            frames << rowFrame(divider, index, dividers, s, button, bar);
            dividers += divider ? 1 : 0;
        } else {
            dividers += divider ? 1 : 0;
            frames << columnFrame(divider, index, dividers, s, button, bar);
        }
    }
    return frames;
}

QSizeF DoodleBarLayout::sizeThatFits(const QList<qint64> &types, double available)
{
    if (rowSpacing(available, types.size()) >= kLeastSpacing)
        return QSizeF(available, kRowHeight);
    const auto [filled, elements] = widestRow(types, wrappedRows(types, 2));
    return QSizeF(filled + double(kWrappedSpacing) * elements, 2 * kRowHeight + kRowGap);
}

QRect DoodleBarLayout::barFrame(const QSize &view, const QSize &barSize)
{
    return QRect(kBarMargin, view.height() - barSize.height() - kBarMargin, barSize.width(),
                 barSize.height());
}

QRect DoodleBarLayout::toolButtonFrame(const QSize &view)
{
    return QRect(view.width() - 50, view.height() - 100, 44, 44);
}

QColor DoodleBarLayout::barColor()
{
    return QColor::fromRgbF(30 / 255.0f, 30 / 255.0f, 30 / 255.0f, double(0.4f));
}

const QList<DoodlePickerEntry> &DoodleBarLayout::pickers()
{
    static const QList<DoodlePickerEntry> pickers = {
        {DoodleToolbarButtonTypeWidth, ZQDoodleButtonViewTypeBrushWidth, 125},
        {DoodleToolbarButtonTypeEraser, ZQDoodleButtonViewTypeEraserWidth, 100},
        {DoodleToolbarButtonTypeColour, ZQDoodleButtonViewTypeColour, 220},
        {DoodleToolbarButtonTypeText, ZQDoodleButtonViewTypeTextSize, 125},
    };
    return pickers;
}

const DoodlePickerEntry *DoodleBarLayout::pickerOpenedBy(qint64 buttonType)
{
    for (const DoodlePickerEntry &picker : pickers()) {
        if (picker.anchorType == buttonType)
            return &picker;
    }
    return nullptr;
}

QRect DoodleBarLayout::pickerStart(const DoodlePickerEntry &picker, double anchorX, int barY)
{
    return QRect(qRound(anchorX), barY - kPickerGap - kPickerHeight, picker.width, kPickerHeight);
}

QColor DoodleBarLayout::pickerColor()
{
    return QColor::fromRgbF(0, 0, 0, double(0.9f));
}

DoodleChoiceStyle DoodleBarLayout::choiceStyle(qint64 type, int index, bool selected,
                                               const QColor &entryColour, const QColor &brushColor)
{
    const QColor red = QColor::fromRgbF(1, 0, 0, 1);
    const QColor lightGrey = QColor::fromRgbF(2 / 3.0f, 2 / 3.0f, 2 / 3.0f);
    switch (type) {
    case ZQDoodleButtonViewTypeColour:
        return {14, entryColour, selected ? red : QColor(Qt::white), 1.0};
    case ZQDoodleButtonViewTypeBrushWidth:
        // A full point of white around the dot: a dark brush still shows on the dark pill.
        return {10.0 + 2 * index, brushColor, selected ? red : QColor(Qt::white), 1.0};
    case ZQDoodleButtonViewTypeEraserWidth:
        return {10.0 + 2 * index, Qt::white, selected ? red : lightGrey, 1.0};
    default: // text size
        return {12.0 + 2 * index, QColor(), selected ? QColor(Qt::white) : QColor(Qt::transparent),
                1.0};
    }
}

QColor DoodleBarLayout::markFor(qint64 type)
{
    // White shows on the dark pill and, with the gap between, around a dot of
    // any colour. A text size's own white border already shows; it needs none.
    return type == ZQDoodleButtonViewTypeTextSize ? QColor() : QColor(Qt::white);
}

int DoodleBarLayout::choiceSpacing(qint64 type)
{
    return type == ZQDoodleButtonViewTypeColour ? 8 : 5;
}

double DoodleBarLayout::cellPitch(double side, int spacing)
{
    return std::max(side + double(spacing), kLeastTarget);
}

QList<QRectF> DoodleBarLayout::choiceCells(qsizetype count, const QSizeF &picker, double side,
                                           int spacing)
{
    QList<QRectF> cells;
    if (count <= 0)
        return cells;
    const int rows =
        int(std::clamp<qsizetype>(qsizetype(picker.height() / kLeastTarget), 1, count));
    const QSize grid(int((count + rows - 1) / rows), rows);
    // A picker narrower than its fitting size takes smaller steps, down to
    // the designed pitch, before its choices run out of it.
    const double designed = side + double(spacing);
    const double pitch =
        std::max(designed, std::min(cellPitch(side, spacing), picker.width() / grid.width()));
    const QPointF origin((picker.width() - grid.width() * pitch) * 0.5,
                         (picker.height() - grid.height() * kLeastTarget) * 0.5);
    for (int index = 0; index < count; ++index) {
        const QPointF cell(pitch * (index % grid.width()), kLeastTarget * (index / grid.width()));
        cells << QRectF(origin + cell, QSizeF(pitch, kLeastTarget));
    }
    return cells;
}

QSize DoodleBarLayout::pickerFittingSize(qsizetype count, double side, int spacing, int width,
                                         int available)
{
    const double pitch = cellPitch(side, spacing);
    const double oneRow = double(count) * pitch;
    if (std::max<double>(width, oneRow) <= available || count == 0)
        return QSize(qCeil(std::max<double>(width, oneRow)), qCeil(kLeastTarget));
    const QSize grid = gridFor(count, pitch, available);
    return QSize(qCeil(grid.width() * pitch), qCeil(grid.height() * kLeastTarget));
}

double DoodleBarLayout::pickerCornerRadius(double height)
{
    return std::min(height, kLeastTarget) * 0.5;
}

DoodlePickerTable DoodleBarLayout::pickerTable(qint64 type)
{
    switch (type) {
    case ZQDoodleButtonViewTypeColour:
        return {DoodleBundle::stringTable(QStringLiteral("brushColors")), {}};
    case ZQDoodleButtonViewTypeBrushWidth:
        return {{}, DoodleBundle::numberTable(DoodleBundle::scaledTableName("brushWidths"))};
    case ZQDoodleButtonViewTypeEraserWidth:
        return {{}, DoodleBundle::numberTable(DoodleBundle::scaledTableName("eraserWidths"))};
    case ZQDoodleButtonViewTypeTextSize:
        return {{}, DoodleBundle::numberTable(DoodleBundle::scaledTableName("textSizes"))};
    default:
        return {};
    }
}

QString DoodleBarLayout::choiceName(qint64 type, const QString &colour, double size)
{
    switch (type) {
    case ZQDoodleButtonViewTypeColour:
        return QCoreApplication::translate("ZQDoodleButtonView", "Colour %1").arg(colour.trimmed());
    case ZQDoodleButtonViewTypeTextSize:
        return QCoreApplication::translate("ZQDoodleButtonView", "Text size %1").arg(size);
    default:
        return QCoreApplication::translate("ZQDoodleButtonView", "Width %1").arg(size);
    }
}

QColor DoodleBarLayout::colorWithHexString(const QString &text)
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

QImage DoodleBarLayout::coloredImage(const QColor &color, const QSizeF &size)
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

QImage DoodleBarLayout::imageWithBackgroundColor(const QColor &color, const QImage &image)
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
