#pragma once

#include <doodle/DoodleExport.h>
#include <doodle/board/DoodleBoardTypes.h>
#include <doodle/toolbar/ZQDoodleRoundedView.h>

#include <QColor>
#include <QImage>
#include <QList>
#include <QSizeF>
#include <QStringList>
#include <QVariantList>

#include <memory>

class ZQDoodleButton;
class ZQDoodleButtonView;
class ZQDoodleButtonViewPrivate;

// Told about the choices made in an option picker.
class DOODLE_EXPORT ZQDoodleButtonViewDelegate
{
public:
    virtual ~ZQDoodleButtonViewDelegate() = default;
    // Optional.
    virtual void doodleButtonView(ZQDoodleButtonView * /*view*/, qint64 /*selectIndex*/,
                                  qint64 /*buttonType*/)
    {}
};

// The strip with semicircular ends that opens above the main tool bar: one
// round choice per entry of a resource table (colours, brush widths, eraser
// widths or text sizes), the selected one marked by its border.
class DOODLE_EXPORT ZQDoodleButtonView : public ZQDoodleRoundedView
{
    Q_OBJECT
public:
    ZQDoodleButtonView(const QRect &frame, qint64 selectIndex, qint64 type,
                       const QColor &brushColor, QWidget *parent = nullptr);
    // A colour picker with entry 0 selected.
    explicit ZQDoodleButtonView(const QRect &frame = QRect(), QWidget *parent = nullptr);
    ~ZQDoodleButtonView() override;

    qint64 type() const;
    qint64 selectIndex() const;
    // The chosen colour (colour picker) or the fill of the width dots.
    QColor brushColor() const;
    // The table this picker's type loaded; the others stay empty.
    QStringList brushColorsArray() const;
    QList<double> brushWidthArray() const;
    QList<double> eraserWidthArray() const;
    QList<double> textSizeArray() const;
    // The value of the last chosen entry; 0 until a choice.
    float brushWidth() const;
    float eraserWidth() const;
    float textSize() const;
    // One button per table entry; a button's type is its entry index.
    QList<ZQDoodleButton *> buttons() const;
    // The size of the last choice built.
    QSizeF buttonSize() const;
    qint64 buttonSpacing() const;
    // Stored for the host; the picker never reads it.
    QVariantList paramArr() const;
    void setParamArr(const QVariantList &params);
    ZQDoodleButtonViewDelegate *delegate() const;
    void setDelegate(ZQDoodleButtonViewDelegate *delegate);

    void initView();
    // Selects the tapped choice and reports it; a tap on the selected one is ignored.
    void chooseAction(ZQDoodleButton *button);
    // Does nothing.
    void emptyAction();
    // Places the choices in cells at least 32 points on each side (narrower,
    // down to the pitch of the largest choice, when the picker is too narrow),
    // centred as a group: one row, or as many as the picker's height holds.
    void layoutSubviews();
    // The size the picker needs with at most `available` points of width: its
    // own width when its choices fit in it, else one row as wide as they
    // need, else as few rows of 32 points as fit.
    QSize fittingSize(int available) const;
    // The chosen width or text size; 0 for a colour picker.
    double getWidth() const;
    QColor getColor() const;

    // Six hexadecimal digits, optionally behind "#" or "0X", blanks around
    // ignored; any other text is the clear colour.
    static QColor colorWithHexString(const QString &text);
    // `image` with every pixel it covers in `color`, its alpha kept.
    static QImage imageWithColor(const QColor &color, const QImage &image);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void loadTable();
    qsizetype entryCount() const;
    ZQDoodleButton *addChoice(int index);
    void styleChoice(ZQDoodleButton *button, int index);
    void setChosenValue(int index);
    double cellPitch() const;

    const std::unique_ptr<ZQDoodleButtonViewPrivate> d;
};
