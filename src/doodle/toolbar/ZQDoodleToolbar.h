#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/toolbar/ZQDoodleRoundedView.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QSizeF>

#include <memory>

class ZQDoodleButton;
class ZQDoodleToolbar;
class ZQDoodleToolbarPrivate;

// The types of the main tool bar's buttons (their tags).
enum DoodleToolbarButtonType : qint64
{
    DoodleToolbarButtonTypeUndo = 1,
    DoodleToolbarButtonTypeColour = 2,
    DoodleToolbarButtonTypeWidth = 3,
    DoodleToolbarButtonTypeEraser = 4,
    DoodleToolbarButtonTypeOval = 5,
    DoodleToolbarButtonTypeRect = 6,
    DoodleToolbarButtonTypeArrow = 7,
    DoodleToolbarButtonTypeText = 8,
    DoodleToolbarButtonTypeClear = 9,
    DoodleToolbarButtonTypeSave = 10,
    DoodleToolbarButtonTypeClose = 11,
    DoodleToolbarButtonTypeLaser = 12,
    DoodleToolbarButtonTypeDivider = 999999,
};

// Told about taps on the main tool bar's buttons.
class DOODLE_EXPORT DoodleToolbarDelegate
{
public:
    virtual ~DoodleToolbarDelegate() = default;
    // Optional.
    virtual void doodleToolbar(ZQDoodleToolbar * /*toolbar*/, ZQDoodleButton * /*button*/,
                               qint64 /*buttonType*/)
    {}
};

// The strip of tool buttons at the bottom of the board: undo, clear, colour,
// pen, eraser, ellipse, rectangle, arrow, text, laser, save and close, with two
// dividers. It keeps no tool state: taps go to the delegate, and the
// controller tells the bar which tool to mark and which colour to show.
class DOODLE_EXPORT ZQDoodleToolbar : public ZQDoodleRoundedView
{
    Q_OBJECT
public:
    explicit ZQDoodleToolbar(bool isHost = false, QWidget *parent = nullptr);
    ~ZQDoodleToolbar() override;

    // The buttons and dividers in display order.
    QList<ZQDoodleButton *> buttons() const;
    QSizeF buttonSize() const;
    void setButtonSize(const QSizeF &size);
    // Recomputed by every layout.
    float buttonSpacing() const;
    void setButtonSpacing(float spacing);
    // A row (true) or a column.
    bool horizontal() const;
    void setHorizontal(bool horizontal);
    // Stored only: host and guest see the same bar.
    bool isHost() const;
    void setIsHost(bool isHost);
    // The controller's action mode; a layout marks its tool selected.
    qint32 actionMode() const;
    void setActionMode(qint32 mode);
    // Painted behind the colour button's icon at the next layout.
    QColor brushColor() const;
    void setBrushColor(const QColor &color);
    DoodleToolbarDelegate *delegate() const;
    void setDelegate(DoodleToolbarDelegate *delegate);

    // Rebuilds every button from actionMode() and brushColor().
    void initDefaultButton();
    ZQDoodleButton *addButton();
    ZQDoodleButton *addDivideLine();
    // Reports a tap to the delegate.
    void buttonAction(ZQDoodleButton *button);
    // Paints `colour` behind the colour button's icons until the next layout;
    // brushColor() is left as it is.
    void setColourButton(const QColor &colour);
    // Rebuilds the buttons and places them. A row too narrow for its buttons
    // at the spacing of sizeThatFits() wraps them into as many rows as the
    // bar's height holds (30 points each, 4 apart).
    void layoutSubviews();
    // The size a row bar takes in `available` width: the whole width and 30
    // high when its buttons fit in one row 2 points or more apart; otherwise
    // two rows 64 high, only as wide as they need.
    QSizeF sizeThatFits(double available) const;
    // Enables or disables (dimmed, no taps) the buttons of `type`, now and
    // after every rebuild of the buttons.
    void setButtonEnabled(qint64 type, bool enabled);
    bool isButtonEnabled(qint64 type) const;

    // A disc of `color` in (8, 8, width - 22, height - 22) on a transparent
    // bitmap of `size` at the screen scale.
    static QImage coloredImage(const QColor &color, const QSizeF &size);
    // `image` drawn over the disc of coloredImage() at its size.
    static QImage imageWithBackgroundColor(const QColor &color, const QImage &image);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void layoutRows(int rows);

    const std::unique_ptr<ZQDoodleToolbarPrivate> d;
};
