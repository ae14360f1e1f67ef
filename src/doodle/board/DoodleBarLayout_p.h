#pragma once

// The bars' tables and geometry, whatever toolkit draws them: the main tool
// bar's buttons, where the bar, its floating button and the option pickers
// sit on the board, and how a picker lays out its choices. Both front-ends
// place their bars with these, so they cannot drift apart. Not installed.
#include <doodle/DoodleExport.h>
#include <doodle/board/DoodleBoardTypes.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QRect>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <algorithm>

// One element of the main tool bar, in display order. `selectedMode` is the
// action mode that marks the button selected; 0 for buttons without a
// selected image. `title` is the tooltip and accessible name, untranslated,
// in the context "ZQDoodleToolbar".
struct DoodleToolEntry
{
    const char *name;
    qint64 type;
    qint32 selectedMode;
    const char *title;
};

// One of the option pickers: the tool-bar button it opens above, what it
// offers and its designed width.
struct DoodlePickerEntry
{
    qint64 anchorType;
    qint64 pickerType;
    int width;
};

// The look of one picker choice: a square of `side` points with round ends.
struct DoodleChoiceStyle
{
    double side;
    QColor fill;
    QColor border;
    double borderWidth;
};

// The entries a picker offers: colours as their table's text, or sizes in points.
struct DoodlePickerTable
{
    QStringList colours;
    QList<double> sizes;
    qsizetype count() const { return colours.isEmpty() ? sizes.size() : colours.size(); }
};

class DOODLE_EXPORT DoodleBarLayout
{
public:
    // The bar's elements (buttons and dividers) in display order.
    static const QList<DoodleToolEntry> &tools();
    static bool isDivider(qint64 type) { return type == DoodleToolbarButtonTypeDivider; }
    // The tool-bar button shown selected for an action mode; 0 for none.
    static qint64 markedButtonType(qint64 mode);

    // The frames of `types` (element types in display order) in a bar of
    // `bar`'s size, and the spacing between them; a row too narrow for its
    // buttons wraps into as many rows as the bar's height holds.
    static QList<QRectF> frames(const QList<qint64> &types, const QSizeF &bar, const QSizeF &button,
                                bool horizontal, float *spacing = nullptr);
    // The size a row bar of `types` takes in `available` width.
    static QSizeF sizeThatFits(const QList<qint64> &types, double available);

    // Where a bar of `barSize` sits in a view of `view`'s size: at the bottom
    // left, a margin in from the edges.
    static QRect barFrame(const QSize &view, const QSize &barSize);
    // The floating button that folds and unfolds the bar.
    static QRect toolButtonFrame(const QSize &view);
    // The bar's corner radius and fill.
    static double barCornerRadius() { return 4.0; }
    static QColor barColor();

    // The pickers, in the order they close; the one a tool-bar button opens, or none.
    static const QList<DoodlePickerEntry> &pickers();
    static const DoodlePickerEntry *pickerOpenedBy(qint64 buttonType);
    // Where a picker opens: above the bar, at the left of its anchor (its x in the view).
    static QRect pickerStart(const DoodlePickerEntry &picker, double anchorX, int barY);
    // `start` kept inside the view, above the bar and left of the floating
    // button; `fitting` gives the picker's size for an available width.
    template <typename Fitting>
    static QRect fitPicker(const QRect &start, const QRect &bar, const QRect &toolButton,
                           int viewWidth, Fitting fitting)
    {
        const int right = std::min(viewWidth, toolButton.x() - kClearOfToolButton);
        const int left = std::min(kBarMargin, std::max(0, right - kPickerHeight));
        const QSize size = fitting(right - left);
        const int x = std::max(left, std::min(start.x(), right - size.width()));
        const int bottom = bar.y() - kPickerGap;
        return QRect(x, std::max(0, bottom - size.height()), size.width(), size.height());
    }
    static QColor pickerColor();

    // A picker's choices: the look of entry `index`, the ring around the
    // selected one (none for text sizes), the gap between choices.
    static DoodleChoiceStyle choiceStyle(qint64 type, int index, bool selected,
                                         const QColor &entryColour, const QColor &brushColor);
    static QColor markFor(qint64 type);
    static int choiceSpacing(qint64 type);
    // Every choice takes taps in a cell at least this many points on each side.
    static constexpr double kLeastTarget = 32.0;
    // The pitch of choices `side` wide at `spacing`, widened to a finger's target.
    static double cellPitch(double side, int spacing);
    // The cells of `count` choices in a picker of `picker`'s size, centred as
    // a group: one row, or as many as its height holds.
    static QList<QRectF> choiceCells(qsizetype count, const QSizeF &picker, double side,
                                     int spacing);
    // The size a picker of `width` with `count` choices needs within `available` width.
    static QSize pickerFittingSize(qsizetype count, double side, int spacing, int width,
                                   int available);
    static double pickerCornerRadius(double height);
    // The table a picker of `type` offers, from the resource bundle at the screen's scale.
    static DoodlePickerTable pickerTable(qint64 type);
    // The accessible name of a choice: its colour's text or its size.
    static QString choiceName(qint64 type, const QString &colour, double size);

    // Six hexadecimal digits, optionally behind "#" or "0X", blanks around
    // ignored; any other text is the clear colour.
    static QColor colorWithHexString(const QString &text);
    // A disc of `color` in (8, 8, width - 22, height - 22) on a transparent
    // bitmap of `size` at the screen scale.
    static QImage coloredImage(const QColor &color, const QSizeF &size);
    // `image` drawn over the disc of coloredImage() at its size.
    static QImage imageWithBackgroundColor(const QColor &color, const QImage &image);

    static constexpr int kBarMargin = 16;
    static constexpr int kPickerHeight = 32;
    static constexpr int kPickerGap = 9;
    // Pickers keep this far left of the floating button (and its shadow).
    static constexpr int kClearOfToolButton = 4;
};
